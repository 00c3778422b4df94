/* The maximum of 3x3 pixels: a single bright pixel becomes a bright square. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 9, Height = 7 };

int main(void) {
    static uint8_t image[Height][Width], largest[Height][Width];
    image[3][4] = 255;
    const RoiSize roi = {Width, Height}, mask = {3, 3};
    const Point2i centre = {1, 1};
    int32_t bytes = 0;
    StatusCode status = rvxiFilterMaxGetBufferSize_8u_C1R(Width, mask, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiFilterMaxBorderReplicate_8u_C1R(image[0], Width, largest[0], Width, roi, mask, centre, buffer);
    free(buffer);
    int count = 0;
    for (int i = 0; i < Width * Height; ++i) {
        count += largest[i / Width][i % Width] == 255;
    }
    printf("status %d: %d bright pixels\n", (int)status, count);
    return status == StatusOk && count == 9 && largest[2][3] == 255 && largest[4][5] == 255 ? 0 : 1;
}
