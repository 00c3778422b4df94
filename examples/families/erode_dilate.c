/* An erosion with a cross: what is thinner than the cross disappears, the rest loses its rim. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 10 };

int main(void) {
    static uint8_t image[Height][Width], eroded[Height][Width];
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int block = x >= 2 && x < 9 && y >= 2 && y < 7, wire = x == 12;
            image[y][x] = block || wire ? 255 : 0;
        }
    }
    const uint8_t cross[3][3] = {{0, 1, 0}, {1, 1, 1}, {0, 1, 0}};
    const RoiSize roi = {Width, Height}, maskSize = {3, 3};
    int32_t specBytes = 0, bytes = 0;
    StatusCode status = rvxiMorphologyBorderGetSize_8u_C1R(Width, maskSize, &specBytes, &bytes);
    MorphSpec *spec = malloc((size_t)specBytes);
    uint8_t *buffer = malloc((size_t)bytes);
    if (status == StatusOk) {
        status = rvxiMorphologyBorderInit_8u_C1R(Width, cross[0], maskSize, spec, buffer);
    }
    if (status == StatusOk) {
        status = rvxiErodeBorder_8u_C1R(image[0], Width, eroded[0], Width, roi, BorderReplicate, 0, spec, buffer);
    }
    free(buffer);
    free(spec);
    int left = 0;
    for (int i = 0; i < Width * Height; ++i) {
        left += eroded[i / Width][i % Width] == 255;
    }
    printf("status %d: %d pixels are left\n", (int)status, left);
    return status == StatusOk && left == 5 * 3 && eroded[4][12] == 0 ? 0 : 1;
}
