/* Mean and deviation of the pixels that a mask selects. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const uint8_t image[2][4] = {{90, 110, 90, 255}, {110, 90, 110, 0}};
    const uint8_t mask[2][4] = {{1, 1, 1, 0}, {1, 1, 1, 0}};
    const RoiSize roi = {4, 2};
    double mean = 0, deviation = 0;
    const StatusCode status = rvxiMean_StdDev_8u_C1MR(image[0], 4, mask[0], 4, roi, &mean, &deviation);
    printf("status %d: mean %g, deviation %g\n", (int)status, mean, deviation);
    return status == StatusOk && mean == 100 && deviation == 10 ? 0 : 1;
}
