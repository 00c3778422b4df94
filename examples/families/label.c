/* Numbers the connected parts of a picture: two that touch by a corner are one for NormInf, two for NormL1. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 8, Height = 4 };

int main(void) {
    const uint8_t image[Height][Width] = {
        {9, 9, 0, 0, 0, 0, 0, 0}, {9, 9, 0, 0, 0, 7, 7, 0}, {0, 0, 9, 9, 0, 7, 7, 0}, {0, 0, 9, 9, 0, 0, 0, 0}};
    static int32_t label[Height][Width];
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0, eight = 0, four = 0;
    StatusCode status = rvxiLabelMarkersGetBufferSize_8u32s_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiLabelMarkers_8u32s_C1R(image[0], Width, label[0], 4 * Width, roi, 1, 100, NormInf, &eight, buffer);
    if (status == StatusOk) {
        status = rvxiLabelMarkers_8u32s_C1R(image[0], Width, label[0], 4 * Width, roi, 1, 100, NormL1, &four, buffer);
    }
    free(buffer);
    printf("status %d: %d parts, or %d\n", (int)status, (int)eight, (int)four);
    return status == StatusOk && eight == 2 && four == 3 && label[0][0] == 1 && label[1][5] == 2 && label[2][2] == 3
               ? 0
               : 1;
}
