/* Tracks points between two frames, from start to finish: a pyramid for each frame, the tracker's state, the call, what
 * its results mean, and the clean-up. The frames are drawn, and the second shows the first one's scene moved by a known
 * distance, so that the program can say how far off the result is. */
#include <math.h>
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 320, Height = 240, Levels = 3, Points = 6, Window = 21 };

static const float motionX = 9.3f, motionY = -5.6f;

/* A smooth texture with detail of several sizes, at any real position. The right edge of the scene is flat. */
static uint8_t scene(double x, double y) {
    if (x > 260) {
        return 90;
    }
    const double v = 40 * sin(x / 5.0) * cos(y / 7.0) + 30 * sin((x + 2 * y) / 17.0) + 25 * cos((x - y) / 31.0);
    return (uint8_t)(128 + v);
}

static void drawFrame(uint8_t *image, double moveX, double moveY) {
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            image[y * Width + x] = scene(x - moveX, y - moveY);
        }
    }
}

/* Releases what makePyramid made, as far as it came. */
static void freePyramid(PyramidRecord *pyramid) {
    if (pyramid == NULL) {
        return;
    }
    for (int32_t i = 0; i <= pyramid->levelCount; ++i) {
        free(pyramid->images[i]);
    }
    rvxiPyramidFree(pyramid); /* the record alone: the images are the caller's */
}

/* A pyramid whose level 0 is the frame, drawn at a motion; every further level is half as large. */
static PyramidRecord *makePyramid(double moveX, double moveY) {
    const RoiSize base = {Width, Height};
    PyramidRecord *pyramid = NULL;
    int32_t bytes = 0;
    if (rvxiPyramidInitAlloc(&pyramid, Levels, base, 2.0f) != StatusOk) {
        return NULL;
    }
    /* One buffer serves all levels: the widest needs most. */
    StatusCode status = rvxiPyrDownGetBufSize_Gauss5x5(Width, PixelType8u, 1, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    int ok = buffer != NULL;
    for (int32_t i = 0; ok && i <= pyramid->levelCount; ++i) {
        const RoiSize size = pyramid->roiSizes[i];
        uint8_t *image = malloc((size_t)size.width * (size_t)size.height);
        pyramid->images[i] = image;
        pyramid->steps[i] = size.width;
        ok = image != NULL;
        if (ok && i == 0) {
            drawFrame(image, moveX, moveY);
        } else if (ok) {
            ok = rvxiPyrDown_Gauss5x5_8u_C1R(pyramid->images[i - 1], pyramid->steps[i - 1], image, size.width,
                                             pyramid->roiSizes[i - 1], buffer) == StatusOk;
        }
    }
    free(buffer);
    if (!ok) {
        freePyramid(pyramid);
        return NULL;
    }
    return pyramid;
}

int main(void) {
    PyramidRecord *before = makePyramid(0, 0), *after = makePyramid((double)motionX, (double)motionY);

    /* The state holds the tracker's work memory; it serves any number of calls with this window. The size is that of
     * the largest level whose derivatives are computed once for all points. */
    OpticalFlowState *state = NULL;
    const RoiSize derivatives = {Width / 2 + 1, Height / 2 + 1};
    StatusCode status = before != NULL && after != NULL
                            ? rvxiOpticalFlowPyrLKInitAlloc_8u_C1R(&state, derivatives, Window, 0)
                            : StatusNoMemory;

    /* Five points with texture around them, and one in the flat part, where no motion can be seen. */
    const Point2f points[Points] = {{60, 60}, {100.5f, 180.25f}, {150, 90}, {200, 140}, {45, 200}, {300, 120}};
    Point2f found[Points]; /* on entry a guess: that they did not move */
    uint8_t lost[Points];
    float error[Points];
    for (int i = 0; i < Points; ++i) {
        found[i] = points[i];
    }
    if (status == StatusOk) {
        status = rvxiOpticalFlowPyrLK_8u_C1R(before, after, points, found, lost, error, Points, Window, Levels,
                                             20,    /* steps on each level at most */
                                             0.01f, /* pixels: a step shorter than this is the last */
                                             state);
    }

    int right = status == StatusOk;
    for (int i = 0; status == StatusOk && i < Points; ++i) {
        if (lost[i] != 0) { /* 0: tracked on all levels; otherwise the level that lost it, plus 1 */
            printf("(%.2f, %.2f) lost on level %d\n", (double)points[i].x, (double)points[i].y, lost[i] - 1);
            right = right && i == Points - 1;
            continue;
        }
        const double offX = (double)(found[i].x - points[i].x - motionX);
        const double offY = (double)(found[i].y - points[i].y - motionY);
        printf("(%.2f, %.2f) moved to (%.2f, %.2f), %.3f pixels off; its window differs by %.2f grey levels\n",
               (double)points[i].x, (double)points[i].y, (double)found[i].x, (double)found[i].y,
               sqrt(offX * offX + offY * offY), (double)error[i]);
        right = right && i != Points - 1 && offX * offX + offY * offY < 0.1 * 0.1;
    }

    if (state != NULL) {
        rvxiOpticalFlowPyrLKFree_8u_C1R(state);
    }
    freePyramid(before);
    freePyramid(after);
    return right ? 0 : 1;
}
