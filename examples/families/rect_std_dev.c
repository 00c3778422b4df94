/* Local contrast: in every window of 2x2 of a checkerboard of 90 and 110 the deviation is 10. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 10, Height = 8 };

int main(void) {
    static uint8_t image[Height][Width];
    static int32_t sum[Height + 1][Width + 1];
    static double sqr[Height + 1][Width + 1];
    static float deviation[Height - 1][Width - 1];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (i % Width + i / Width) % 2 == 0 ? 90 : 110;
    }
    const RoiSize roi = {Width, Height}, windows = {Width - 1, Height - 1};
    const Rect2i window = {0, 0, 2, 2};
    StatusCode status = rvxiSqrIntegral_8u32s64f_C1R(image[0], Width, sum[0], (int32_t)sizeof sum[0], sqr[0],
                                                     (int32_t)sizeof sqr[0], roi, 0, 0);
    if (status == StatusOk) {
        status = rvxiRectStdDev_32s32f_C1R(sum[0], (int32_t)sizeof sum[0], sqr[0], (int32_t)sizeof sqr[0], deviation[0],
                                           (int32_t)sizeof deviation[0], windows, window);
    }
    int wrong = 0;
    for (int i = 0; i < (Width - 1) * (Height - 1); ++i) {
        wrong += deviation[i / (Width - 1)][i % (Width - 1)] != 10;
    }
    printf("status %d: %d windows differ\n", (int)status, wrong);
    return status == StatusOk && wrong == 0 ? 0 : 1;
}
