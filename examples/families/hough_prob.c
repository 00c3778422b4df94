/* Finds the two ends of a stroke. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { Width = 64, Height = 48 };

int main(void) {
    static uint8_t image[Height][Width];
    memset(&image[20][8], 255, 40); /* from (8, 20) to (47, 20) */

    const RoiSize roi = {Width, Height};
    const HoughResolution resolution = {1.0F, 0.0174532925F}; /* a pixel, a degree */
    Point2i ends[8];
    int32_t specBytes = 0, bytes = 0, count = 0;
    StatusCode status = rvxiHoughProbLineGetSize_8u_C1R(roi, resolution, &specBytes, &bytes);
    HoughProbLineSpec *spec = malloc((size_t)specBytes);
    uint8_t *buffer = malloc((size_t)bytes);
    if (status == StatusOk) {
        status = rvxiHoughProbLineInit_8u32f_C1R(roi, 1, spec, resolution);
    }
    if (status == StatusOk) {
        status = rvxiHoughProbLine_8u32f_C1R(image[0], Width, roi, 20, 30, 2, ends, 4, &count, buffer, spec);
    }
    free(buffer);
    free(spec);
    if (status != StatusOk || count != 1) {
        return 1;
    }
    printf("from (%d, %d) to (%d, %d)\n", (int)ends[0].x, (int)ends[0].y, (int)ends[1].x, (int)ends[1].y);
    return ends[0].x + ends[1].x == 8 + 47 && ends[0].y == 20 && ends[1].y == 20 ? 0 : 1;
}
