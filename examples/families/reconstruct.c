/* Fills a hole: a marker that is bright everywhere but on the frame shrinks until the picture holds it up. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 20, Height = 12 };

int main(void) {
    static uint8_t image[Height][Width], filled[Height][Width];
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int inside = x >= 4 && x < 14 && y >= 3 && y < 9, hole = x >= 6 && x < 12 && y >= 5 && y < 7;
            image[y][x] = inside && !hole ? 200 : 30;
            filled[y][x] = x == 0 || y == 0 || x == Width - 1 || y == Height - 1 ? image[y][x] : 255;
        }
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiMorphReconstructGetBufferSize_8u_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiMorphReconstructErode_8u_C1IR(image[0], Width, filled[0], Width, roi, NormL1, buffer);
    free(buffer);
    printf("status %d: the hole was %d and is %d, outside is %d\n", (int)status, image[5][8], filled[5][8],
           filled[1][1]);
    return status == StatusOk && filled[5][8] == 200 && filled[1][1] == 30 && filled[3][4] == 200 ? 0 : 1;
}
