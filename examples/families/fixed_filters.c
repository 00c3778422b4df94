/* The derivative across an edge from 10 to 60: four times the difference on both its sides, 0 elsewhere. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 8, Height = 5 };

int main(void) {
    static uint8_t image[Height][Width];
    static int16_t gradient[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = i % Width < 4 ? 10 : 60;
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiFilterSobelNegVertGetBufferSize_8u16s_C1R(roi, Mask3x3, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiFilterSobelNegVertBorder_8u16s_C1R(image[0], Width, gradient[0], 2 * Width, roi, Mask3x3,
                                                    BorderReplicate, 0, buffer);
    free(buffer);
    printf("status %d: %d %d %d\n", (int)status, gradient[0][2], gradient[0][3], gradient[0][4]);
    return status == StatusOk && gradient[0][2] == 0 && gradient[0][3] == 200 && gradient[0][4] == 200 ? 0 : 1;
}
