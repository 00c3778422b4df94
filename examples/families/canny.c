/* One edge pixel a row along a vertical edge, however strong it is. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 32, Height = 16 };

int main(void) {
    static uint8_t image[Height][Width], edges[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = i % Width < 13 ? 40 : 160;
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiCannyBorderGetSize(roi, CannyFilterSobel, Mask3x3, PixelType8u, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiCannyBorder_8u_C1R(image[0], Width, edges[0], Width, roi, CannyFilterSobel, Mask3x3, BorderReplicate,
                                    0, CannyNormL2, buffer, 50.0F, 100.0F);
    free(buffer);
    int count = 0, beside = 0;
    for (int i = 0; i < Width * Height; ++i) {
        count += edges[i / Width][i % Width] == 255;
        beside += edges[i / Width][i % Width] == 255 && (i % Width < 12 || i % Width > 13);
    }
    printf("status %d: %d edge pixels in %d rows\n", (int)status, count, Height);
    return status == StatusOk && count == Height && beside == 0 ? 0 : 1;
}
