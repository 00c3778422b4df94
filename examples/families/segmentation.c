/* Two seeds in two basins: their regions meet on the ridge between them. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 21, Height = 9, Ridge = 12 };

int main(void) {
    static uint8_t relief[Height][Width];
    static int32_t label[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        relief[i / Width][i % Width] = (uint8_t)(200 - 10 * abs(i % Width - Ridge));
    }
    label[4][2] = 1;
    label[4][18] = 2;
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiSegmentWatershedGetBufferSize_8u32s_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiSegmentWatershed_8u32s_C1IR(relief[0], Width, label[0], (int32_t)sizeof label[0], roi, NormL1,
                                             SegmentLines, buffer);
    free(buffer);
    int wrong = 0;
    for (int i = 0; i < Width * Height; ++i) {
        const int x = i % Width, expected = x == Ridge ? 0 : x < Ridge ? 1 : 2;
        wrong += label[i / Width][x] != expected;
    }
    printf("status %d: %d %d %d\n", (int)status, (int)label[0][Ridge - 1], (int)label[0][Ridge],
           (int)label[0][Ridge + 1]);
    return status == StatusOk && wrong == 0 ? 0 : 1;
}
