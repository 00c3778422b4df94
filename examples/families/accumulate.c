/* A background that follows slowly: each frame moves it by half the difference. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const RoiSize roi = {4, 1};
    const uint8_t frame[4] = {100, 100, 200, 0};
    float background[4] = {0, 100, 100, 100};
    StatusCode status = StatusOk;
    for (int i = 0; i < 2 && status == StatusOk; ++i) {
        status = rvxiAddWeighted_8u32f_C1IR(frame, 4, background, 4 * (int32_t)sizeof(float), roi, 0.5F);
    }
    printf("status %d: %g %g %g %g\n", (int)status, background[0], background[1], background[2], background[3]);
    return status == StatusOk && background[0] == 75 && background[1] == 100 && background[2] == 175 &&
                   background[3] == 25
               ? 0
               : 1;
}
