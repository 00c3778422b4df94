/* A top-hat keeps what is bright and smaller than the mask, however bright its surroundings are. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { Width = 24, Height = 16 };

int main(void) {
    static uint8_t image[Height][Width], hat[Height][Width], mask[5][5];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = i % Width < 12 ? 20 : 120; /* dark and bright ground */
    }
    image[8][5] = image[8][18] = 180; /* a speck on each */
    memset(mask, 1, sizeof mask);

    const RoiSize roi = {Width, Height}, maskSize = {5, 5};
    int32_t specBytes = 0, bytes = 0;
    StatusCode status = rvxiMorphAdvGetSize_8u_C1R(roi, maskSize, &specBytes, &bytes);
    MorphAdvSpec *spec = malloc((size_t)specBytes);
    uint8_t *buffer = malloc((size_t)bytes);
    if (status == StatusOk) {
        status = rvxiMorphAdvInit_8u_C1R(roi, mask[0], maskSize, spec, buffer);
    }
    if (status == StatusOk) {
        status = rvxiMorphTophatBorder_8u_C1R(image[0], Width, hat[0], Width, roi, BorderReplicate, 0, spec, buffer);
    }
    free(buffer);
    free(spec);
    printf("status %d: specks %d and %d, ground %d\n", (int)status, hat[8][5], hat[8][18], hat[8][12]);
    return status == StatusOk && hat[8][5] == 160 && hat[8][18] == 60 && hat[8][12] == 0 ? 0 : 1;
}
