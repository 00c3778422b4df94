/* A lamp that blinks belongs to the background once both its colours have been taught; a third one does not. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Teach = 20 };

int main(void) {
    const RoiSize roi = {1, 1};
    const ForegroundHistogramParams params = {8, 6, 10, 0.8F};
    const uint8_t background = 0; /* a map that says: no foreground here */
    uint8_t map[3] = {0, 0, 0};
    int32_t bytes = 0;
    StatusCode status = rvxiForegroundHistogramGetSize_8u(roi, 1, &params, &bytes);
    ForegroundHistogramState *state = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiForegroundHistogramInit_8u(roi, 1, &params, state);
    for (int i = 0; i < Teach && status == StatusOk; ++i) {
        const uint8_t lamp = i % 2 == 0 ? 40 : 230;
        status = rvxiForegroundHistogramUpdate_8u_C1R(&lamp, 1, &background, 1, roi, 0.1F, state);
    }
    const uint8_t seen[3] = {40, 230, 130};
    for (int i = 0; i < 3 && status == StatusOk; ++i) {
        status = rvxiForegroundHistogram_8u_C1R(&seen[i], 1, &map[i], 1, roi, 0.0F, state);
    }
    free(state);
    printf("status %d: off %d, on %d, something else %d\n", (int)status, map[0], map[1], map[2]);
    return status == StatusOk && map[0] == ForegroundNo && map[1] == ForegroundNo && map[2] == ForegroundYes ? 0 : 1;
}
