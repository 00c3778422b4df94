/* Fills a scratch in a ramp; what lies around it tells how it went on. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 32, Height = 24, Radius = 5 };

int main(void) {
    static uint8_t image[Height][Width], missing[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        const int x = i % Width, y = i / Width, scratch = x >= 14 && x < 17 && y >= 4 && y < 20;
        missing[y][x] = (uint8_t)scratch;
        image[y][x] = (uint8_t)(scratch ? 0 : 5 * x);
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiInpaintGetBufferSize_8u_C1MR(roi, Radius, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    /* In place: source and destination may be the same image. */
    status =
        rvxiInpaint_8u_C1MR(image[0], Width, missing[0], Width, image[0], Width, roi, Radius, InpaintMarch, buffer);
    free(buffer);
    int worst = 0;
    for (int i = 0; i < Width * Height; ++i) {
        const int error = abs(image[i / Width][i % Width] - 5 * (i % Width));
        worst = error > worst ? error : worst;
    }
    printf("status %d: at most %d levels off\n", (int)status, worst);
    return status == StatusOk && worst <= 2 ? 0 : 1;
}
