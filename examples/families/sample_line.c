/* The pixels on a diagonal. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 8, Height = 8 };

int main(void) {
    uint8_t image[Height][Width], line[Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (uint8_t)(10 * (i / Width) + i % Width);
    }
    const RoiSize roi = {Width, Height};
    const Point2i first = {1, 2}, last = {6, 7};
    const StatusCode status = rvxiSampleLine_8u_C1R(image[0], Width, roi, line, first, last);
    if (status != StatusOk) {
        return 1;
    }
    int wrong = 0;
    for (int i = 0; i < 6; ++i) {
        printf("%d ", line[i]);
        wrong += line[i] != image[2 + i][1 + i];
    }
    printf("\n");
    return wrong == 0 ? 0 : 1;
}
