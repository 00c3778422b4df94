/* A picture 1.5 times smaller, smoothed by a kernel of three taps. The state serves every picture up to its size. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 24, Height = 18 };

int main(void) {
    static uint8_t image[Height][Width], smaller[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (uint8_t)(10 * (i % Width));
    }
    const int16_t kernel[3] = {1, 2, 1};
    const RoiSize roi = {Width, Height};
    RoiSize size = {0, 0};
    PyramidLayerDownState *state = NULL;
    StatusCode status = rvxiGetPyramidDownROI(roi, &size, 1.5F);
    if (status == StatusOk) {
        status = rvxiPyramidLayerDownInitAlloc_8u_C1R(&state, roi, 1.5F, kernel, 3, 2);
    }
    if (status != StatusOk) {
        return 1;
    }
    status = rvxiPyramidLayerDown_8u_C1R(image[0], Width, roi, smaller[0], Width, size, state);
    rvxiPyramidLayerDownFree_8u_C1R(state);
    printf("status %d: %dx%d, %d %d %d\n", (int)status, (int)size.width, (int)size.height, smaller[5][4], smaller[5][6],
           smaller[5][8]);
    return status == StatusOk && size.width == 16 && size.height == 12 && smaller[5][4] == 60 && smaller[5][6] == 90 &&
                   smaller[5][8] == 120
               ? 0
               : 1;
}
