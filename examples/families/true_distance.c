/* The exact distance to the nearest zero pixel: three columns and four rows away it is 5. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { Width = 12, Height = 10 };

int main(void) {
    static uint8_t image[Height][Width];
    static float distance[Height][Width];
    memset(image, 255, sizeof image);
    image[2][3] = 0;
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status =
        rvxiTrueDistanceTransform_8u32f_C1R(image[0], Width, distance[0], (int32_t)sizeof distance[0], roi, buffer);
    free(buffer);
    printf("status %d: %g\n", (int)status, distance[6][6]);
    return status == StatusOk && distance[2][3] == 0 && distance[6][6] == 5 ? 0 : 1;
}
