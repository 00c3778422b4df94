/* Steps to the nearest zero pixel, along rows and columns only. */
#include <rvxcv.h>
#include <stdio.h>
#include <string.h>

enum { Width = 9, Height = 7 };

int main(void) {
    static uint8_t image[Height][Width], distance[Height][Width];
    memset(image, 255, sizeof image);
    image[1][2] = 0;
    const RoiSize roi = {Width, Height};
    int32_t metrics[2];
    StatusCode status = rvxiGetDistanceTransformMask_32s(3, NormL1, metrics);
    if (status == StatusOk) {
        status = rvxiDistanceTransform_3x3_8u_C1R(image[0], Width, distance[0], Width, roi, metrics);
    }
    printf("status %d: %d steps to the lower right corner\n", (int)status, distance[6][8]);
    return status == StatusOk && distance[1][2] == 0 && distance[6][8] == 6 + 5 ? 0 : 1;
}
