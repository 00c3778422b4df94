/* When a front that starts at the left edge arrives: one pixel per unit of time. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 8 };

int main(void) {
    static uint8_t image[Height][Width];
    static float arrival[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = i % Width > 0;
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiFastMarchingGetBufferSize_8u32f_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiFastMarching_8u32f_C1R(image[0], Width, arrival[0], (int32_t)sizeof arrival[0], roi, buffer);
    free(buffer);
    printf("status %d: %g %g %g\n", (int)status, arrival[3][0], arrival[3][1], arrival[3][15]);
    return status == StatusOk && arrival[3][0] == 0 && arrival[3][1] == 1 && arrival[3][15] == 15 ? 0 : 1;
}
