/* The line through the pixels of a column: 20 pixels from the first one, its normal along the rows. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 48, Height = 64 };

int main(void) {
    static uint8_t image[Height][Width];
    for (int y = 0; y < Height; ++y) {
        image[y][20] = 255;
    }
    const RoiSize roi = {Width, Height};
    const HoughResolution resolution = {1.0F, 0.0174532925F}; /* a pixel, a degree */
    HoughLine lines[4];
    int32_t bytes = 0, count = 0;
    StatusCode status = rvxiHoughLineGetSize_8u_C1R(roi, resolution, 4, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiHoughLine_8u32f_C1R(image[0], Width, roi, Height - 1, lines, 4, &count, buffer, resolution);
    free(buffer);
    if (status != StatusOk || count < 1) {
        return 1;
    }
    printf("rho %g, theta %g\n", lines[0].rho, lines[0].theta);
    return lines[0].rho == 20 && lines[0].theta == 0 ? 0 : 1;
}
