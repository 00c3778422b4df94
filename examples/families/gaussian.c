/* Blurs an edge. The record with the kernel is made once and serves any number of images. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 8 };

int main(void) {
    static uint8_t image[Height][Width], blurred[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = i % Width < 8 ? 0 : 200;
    }
    const RoiSize roi = {Width, Height};
    int32_t specBytes = 0, bytes = 0;
    StatusCode status = rvxiFilterGaussianGetBufferSize(roi, 5, PixelType8u, 1, &specBytes, &bytes);
    GaussianSpec *spec = malloc((size_t)specBytes);
    uint8_t *buffer = malloc((size_t)bytes);
    if (status == StatusOk) {
        status = rvxiFilterGaussianInit(roi, 5, BorderReplicate, PixelType8u, 1, spec, buffer, 1.0F);
    }
    if (status == StatusOk) {
        status = rvxiFilterGaussianBorder_8u_C1R(image[0], Width, blurred[0], Width, roi, 0, spec, buffer);
    }
    free(buffer);
    free(spec);
    const uint8_t *row = blurred[3];
    printf("status %d: %d %d | %d %d\n", (int)status, row[6], row[7], row[8], row[9]);
    return status == StatusOk && row[2] == 0 && row[6] < row[7] && row[7] < 100 && row[8] > 100 && row[13] >= 199 ? 0
                                                                                                                  : 1;
}
