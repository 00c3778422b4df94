/* Where a point went: the second frame shows the first one's pattern two columns to the right and one row down. One
 * level is enough for so little; examples/track_points.c builds whole pyramids. */
#include <math.h>
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 64, Height = 48, Window = 15 };

static float frames[2][Height][Width];

static PyramidRecord *pyramidOf(float *image) {
    const RoiSize roi = {Width, Height};
    PyramidRecord *pyramid = NULL;
    if (rvxiPyramidInitAlloc(&pyramid, 1, roi, 2.0F) == StatusOk) {
        pyramid->images[0] = image;
        pyramid->steps[0] = Width * (int32_t)sizeof(float);
    }
    return pyramid;
}

int main(void) {
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            frames[0][y][x] = 100 + 50 * sinf(0.3F * (float)x) * cosf(0.25F * (float)y);
            frames[1][y][x] = 100 + 50 * sinf(0.3F * (float)(x - 2)) * cosf(0.25F * (float)(y - 1));
        }
    }
    const RoiSize roi = {Width, Height};
    const Point2f from = {30, 22};
    Point2f to = from;
    uint8_t lost = 1;
    float error = 0;
    OpticalFlowState *state = NULL;
    PyramidRecord *before = pyramidOf(frames[0][0]), *after = pyramidOf(frames[1][0]);
    StatusCode status = rvxiOpticalFlowPyrLKInitAlloc_32f_C1R(&state, roi, Window, 0);
    if (status == StatusOk) {
        status =
            rvxiOpticalFlowPyrLK_32f_C1R(before, after, &from, &to, &lost, &error, 1, Window, 0, 20, 0.001F, state);
        rvxiOpticalFlowPyrLKFree_32f_C1R(state);
    }
    rvxiPyramidFree(before);
    rvxiPyramidFree(after);
    printf("status %d: moved by (%.2f, %.2f)\n", (int)status, to.x - from.x, to.y - from.y);
    return status == StatusOk && lost == 0 && fabsf(to.x - 32) < 0.05F && fabsf(to.y - 23) < 0.05F ? 0 : 1;
}
