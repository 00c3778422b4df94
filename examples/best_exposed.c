/* Picks the best-exposed picture of a series, as a camera's bracketing needs it.
 *
 * The subject stands before a bright sky. What counts is its own brightness, near the middle of the scale, not that of
 * the whole picture: a mask says which pixels are looked at. */
#include <math.h>
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 160, Height = 120, Pictures = 8 };
static const double middleGrey = 118; /* what a grey card gives */

static uint8_t series[Pictures][Height][Width];
static uint8_t subject[Height][Width]; /* the mask: not zero where the subject stands */

/* A dark figure with folds in its coat before the sky; each picture is exposed twice as long as the one before. */
static void takeSeries(void) {
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const double u = (x - 80) / 30.0, v = (y - 75) / 52.0;
            subject[y][x] = (uint8_t)(u * u + v * v < 1 ? 255 : 0);
            const double light = subject[y][x] != 0 ? 0.05 + 0.02 * sin(0.5 * x + 0.1 * y) : 1.2 - 0.004 * y;
            for (int i = 0; i < Pictures; ++i) {
                series[i][y][x] = (uint8_t)(255 * (1 - exp(-light * 0.25 * (1 << i))));
            }
        }
    }
}

/* The picture whose mean is nearest to the middle, under the mask or, where that is null, as a whole; -1 on failure. */
static int best(const uint8_t *mask) {
    const RoiSize roi = {Width, Height};
    int found = -1;
    double least = HUGE_VAL;
    for (int i = 0; i < Pictures; ++i) {
        double mean, deviation, low, high;
        Point2i lowAt, highAt;
        StatusCode status = mask != NULL
                                ? rvxiMean_StdDev_8u_C1MR(series[i][0], Width, mask, Width, roi, &mean, &deviation)
                                : rvxiMean_StdDev_8u_C1R(series[i][0], Width, roi, &mean, &deviation);
        if (status == StatusOk && mask != NULL) {
            status = rvxiMinMaxIndx_8u_C1MR(series[i][0], Width, mask, Width, roi, &low, &high, &lowAt, &highAt);
            printf("picture %d: mean %5.1f, deviation %4.1f, levels %3.0f to %3.0f\n", i, mean, deviation, low, high);
        }
        if (status != StatusOk) {
            fprintf(stderr, "status %d\n", (int)status);
            return -1;
        }
        if (fabs(mean - middleGrey) < least) {
            least = fabs(mean - middleGrey);
            found = i;
        }
    }
    return found;
}

int main(void) {
    takeSeries();
    const int bySubject = best(subject[0]), byAll = best(NULL);
    printf("best exposed: picture %d; the whole picture's mean would have taken %d\n", bySubject, byAll);
    return bySubject == 6 && byAll < bySubject ? 0 : 1;
}
