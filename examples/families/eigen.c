/* In which direction a picture changes: a ramp that climbs 3 levels a column and 4 a row. */
#include <math.h>
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 16 };

int main(void) {
    static uint8_t image[Height][Width];
    static float result[Height][Width][6]; /* two eigenvalues, then the two directions */
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (uint8_t)(3 * (i % Width) + 4 * (i / Width));
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiEigenValsVecsGetBufferSize_8u32f_C1R(roi, 3, 3, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiEigenValsVecs_8u32f_C1R(image[0], Width, result[0][0], (int32_t)sizeof result[0], roi,
                                         MinEigenValSobel, 3, 3, buffer);
    free(buffer);
    const float *middle = result[8][8];
    printf("status %d: direction (%.3f, %.3f)\n", (int)status, middle[2], middle[3]);
    return status == StatusOk && fabsf(middle[2] - 0.6F) < 1e-5F && fabsf(middle[3] - 0.8F) < 1e-5F && middle[1] < 1e-6F
               ? 0
               : 1;
}
