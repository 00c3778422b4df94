/* A camera looks at a grey wall; then something bright comes in. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { Width = 16, Height = 8 };

int main(void) {
    static uint8_t frame[Height][Width], map[Height][Width];
    const RoiSize roi = {Width, Height};
    const ForegroundGaussianParams params = {3.0F, 225.0F, 16.0F, 1125.0F, 0.1F, 0.0F};
    int32_t bytes = 0;
    StatusCode status = rvxiForegroundGaussianGetSize_8u(roi, 1, &params, &bytes);
    ForegroundGaussianState *state = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiForegroundGaussianInit_8u(roi, 1, &params, state);
    for (int i = 0; i <= 20 && status == StatusOk; ++i) {
        memset(frame, 120 + i % 3, sizeof frame);
        if (i == 20) {
            frame[4][5] = 220;
        }
        status = rvxiForegroundGaussian_8u_C1R(frame[0], Width, map[0], Width, roi,
                                               i == 20 ? 0.0F : 1.0F / (float)(i + 1), state);
    }
    free(state);
    printf("status %d: visitor %d, wall %d\n", (int)status, map[4][5], map[4][6]);
    return status == StatusOk && map[4][5] == ForegroundYes && map[4][6] == ForegroundNo ? 0 : 1;
}
