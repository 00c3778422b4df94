/* The four corners of a bright square, as a map and as a list. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 40, Height = 32, MaxCorners = 16 };

int main(void) {
    static uint8_t image[Height][Width], map[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        const int x = i % Width, y = i / Width;
        image[y][x] = x >= 10 && x < 30 && y >= 8 && y < 24 ? 200 : 50;
    }
    const RoiSize roi = {Width, Height};
    FastNSpec spec;
    FastCorner corners[MaxCorners];
    int32_t bytes = 0, marked = 0, count = 0;
    StatusCode status = rvxiFastNInit_8u_C1R(3, 9, 40, FastScore | FastNonMax, &spec);
    if (status == StatusOk) {
        status = rvxiFastNGetBufferSize_8u_C1R(roi, &bytes);
    }
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiFastN_8u_C1R(image[0], Width, map[0], Width, roi, &marked, &spec, buffer);
    free(buffer);
    if (status == StatusOk) {
        status = rvxiFastN2DToVec_8u_C1R(map[0], Width, roi, corners, MaxCorners, &count);
    }
    for (int32_t i = 0; i < count; ++i) {
        printf("(%d, %d): %d\n", (int)corners[i].x, (int)corners[i].y, (int)corners[i].score);
    }
    return status == StatusOk && marked == 4 && count == 4 && corners[0].score == 150 ? 0 : 1;
}
