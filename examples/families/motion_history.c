/* Something moves to the right, one pixel a frame; what is longer ago than two frames is forgotten. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 6 };

int main(void) {
    float history[Width] = {0};
    const RoiSize roi = {Width, 1};
    StatusCode status = StatusOk;
    for (int frame = 1; frame <= 5 && status == StatusOk; ++frame) {
        uint8_t moved[Width] = {0};
        moved[frame - 1] = 255;
        status =
            rvxiUpdateMotionHistory_8u32f_C1IR(moved, Width, history, (int32_t)sizeof history, roi, (float)frame, 2.0F);
    }
    printf("status %d: %g %g %g %g %g %g\n", (int)status, history[0], history[1], history[2], history[3], history[4],
           history[5]);
    return status == StatusOk && history[1] == 0 && history[2] == 3 && history[4] == 5 && history[5] == 0 ? 0 : 1;
}
