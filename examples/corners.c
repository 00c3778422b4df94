/* Corners of a small drawn image: the corner measure, then its peaks. Each call asks for its scratch size first. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 48, Height = 32, Capacity = 16 };

int main(void) {
    static uint8_t image[Height][Width];
    static float measure[Height][Width];
    const RoiSize size = {Width, Height};
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            image[y][x] = x >= 12 && x < 36 && y >= 8 && y < 24 ? 220 : 30; /* a bright rectangle */
        }
    }

    int32_t measureBytes = 0, peakBytes = 0;
    StatusCode status = rvxiMinEigenValGetBufferSize_8u32f_C1R(size, 3, 3, &measureBytes);
    if (status == StatusOk) {
        status = rvxiFindPeaks3x3GetBufferSize_32f_C1R(Width, &peakBytes);
    }
    uint8_t *scratch = malloc((size_t)(measureBytes > peakBytes ? measureBytes : peakBytes));
    if (status != StatusOk || scratch == NULL) {
        free(scratch);
        return 1;
    }

    Point2i peaks[Capacity];
    int32_t count = 0;
    status = rvxiMinEigenVal_8u32f_C1R(image[0], Width, measure[0], Width * (int32_t)sizeof(float), size,
                                       MinEigenValSobel, 3, 3, scratch);
    if (status == StatusOk) {
        status = rvxiFindPeaks3x3_32f_C1R(measure[0], Width * (int32_t)sizeof(float), size, 1.0f, peaks, Capacity,
                                          &count, PeakSquare, 2, scratch);
    }
    for (int32_t i = 0; i < count; ++i) {
        printf("corner at (%d, %d), measure %.2f\n", (int)peaks[i].x, (int)peaks[i].y,
               (double)measure[peaks[i].y][peaks[i].x]);
    }
    free(scratch);
    return status == StatusOk ? 0 : 1;
}
