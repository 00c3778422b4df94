/* The strongest of three channels: what an edge detector for grey images goes on with. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const uint8_t channels[2][3] = {{10, 40, 25}, {7, 0, 200}};
    uint8_t strongest[2] = {0, 0};
    const RoiSize roi = {2, 1};
    const StatusCode status = rvxiGradientColorToGray_8u_C3C1R(channels[0], 6, strongest, 2, roi, NormInf);
    printf("status %d: %d %d\n", (int)status, strongest[0], strongest[1]);
    return status == StatusOk && strongest[0] == 40 && strongest[1] == 200 ? 0 : 1;
}
