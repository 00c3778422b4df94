/* Counts the objects in a thresholded image and says how large each one is.
 *
 * Labelling gives every connected part of the non-zero pixels a number of its own, in the order of the parts' first
 * pixels; with 32-bit labels no number has to be used twice. Areas are then one count per label. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 64, Height = 24, MaxObjects = 16 };

int main(void) {
    /* What a camera may see: three bright objects on a dark ground. The ring is one object, and so are the two halves
     * of the step, which touch by a corner. */
    static uint8_t image[Height][Width];
    int32_t expected[3] = {0, 0, 0};
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int r2 = (x - 14) * (x - 14) + (y - 12) * (y - 12);
            const int ring = r2 < 100 && r2 >= 36;
            const int box = x >= 30 && x < 40 && y >= 5 && y < 19;
            const int step = (x >= 46 && x < 52 && y >= 6 && y < 12) || (x >= 52 && x < 58 && y >= 12 && y < 18);
            image[y][x] = (uint8_t)(ring || box || step ? 200 + (x + y) % 40 : 20 + (x * y) % 30);
            expected[0] += ring;
            expected[1] += box;
            expected[2] += step;
        }
    }

    /* The threshold: zero is background, anything else belongs to an object. */
    static uint8_t mask[Height][Width];
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            mask[y][x] = image[y][x] >= 128;
        }
    }

    /* Labels from 1; NormInf joins diagonal neighbours, NormL1 would not. */
    static int32_t label[Height][Width];
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0, count = 0;
    StatusCode status = rvxiLabelMarkersGetBufferSize_8u32s_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    if (buffer == NULL) {
        return 1;
    }
    status = rvxiLabelMarkers_8u32s_C1R(mask[0], Width, label[0], Width * (int32_t)sizeof(int32_t), roi, 1, MaxObjects,
                                        NormInf, &count, buffer);
    free(buffer);
    if (status != StatusOk || count > MaxObjects) {
        fprintf(stderr, "status %d, %d objects\n", (int)status, (int)count);
        return 1;
    }

    int32_t area[MaxObjects + 1] = {0};
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            ++area[label[y][x]];
        }
    }
    printf("%d objects\n", (int)count);
    for (int32_t i = 1; i <= count; ++i) {
        printf("object %d: %d pixels\n", (int)i, (int)area[i]);
    }
    /* The ring's first pixel comes first, then the box's, then the step's. */
    return count == 3 && area[1] == expected[0] && area[2] == expected[1] && area[3] == expected[2] ? 0 : 1;
}
