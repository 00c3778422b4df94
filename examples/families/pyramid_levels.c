/* The sizes of a pyramid's levels, each 1.5 times smaller. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const RoiSize base = {640, 480};
    PyramidRecord *pyramid = NULL;
    if (rvxiPyramidInitAlloc(&pyramid, 3, base, 1.5F) != StatusOk) {
        return 1;
    }
    int wrong = pyramid->levelCount != 3;
    for (int32_t level = 0; level <= pyramid->levelCount; ++level) {
        const RoiSize size = pyramid->roiSizes[level];
        printf("level %d: %dx%d, scale %.3f\n", (int)level, (int)size.width, (int)size.height, pyramid->scales[level]);
        /* Every level follows from the one before it. */
        RoiSize next = base;
        wrong += level > 0 && (rvxiGetPyramidDownROI(pyramid->roiSizes[level - 1], &next, 1.5F) != StatusOk);
        wrong += next.width != size.width || next.height != size.height;
    }
    return rvxiPyramidFree(pyramid) == StatusOk && wrong == 0 ? 0 : 1;
}
