/* A detector of two stages, written by hand: bright bars on a dark ground. Where a trained cascade has many features a
 * stage, these have one; all the rest is the same. */
#include <rvxcv.h>
#include <stdio.h>
#include <string.h>

enum { W = 96, H = 64, WINDOW_W = 12, WINDOW_H = 16, COLUMNS = W - WINDOW_W + 1, ROWS = H - WINDOW_H + 1 };

static uint8_t picture[H][W];
static float sum[H + 1][W + 1];
static double squares[H + 1][W + 1];
static float deviation[ROWS][COLUMNS];
static uint8_t mask[ROWS][COLUMNS];

static void drawBar(int x, int y, int width, int height, int level) {
    for (int j = y; j < y + height; ++j) {
        memset(&picture[j][x], level, (size_t)width);
    }
}

int main(void) {
    /* Values 0 and 1 are votes, thresholds are shares of the deviation summed over the window. Stage 1: the window less
     * three times its middle third is far below zero, for the middle is brighter than the rest. Stage 2: the ends of
     * the middle third less its centre are not below zero by much, for the bar reaches them. */
    const Rect2i rects[2][2] = {{{0, 0, WINDOW_W, WINDOW_H}, {4, 0, 4, WINDOW_H}}, {{4, 0, 4, WINDOW_H}, {4, 4, 4, 8}}};
    const float weights[2][2] = {{1, -3}, {1, -2}};
    const float thresholds[2] = {-1.2f * WINDOW_W * WINDOW_H, -0.1f * WINDOW_W * WINDOW_H};
    const float below[2] = {1, 0}, otherwise[2] = {0, 1};
    const int32_t rectCounts[1] = {2};
    const float stageThreshold = 0.5f;

    memset(picture, 40, sizeof picture);
    drawBar(20, 8, 4, 16, 200);  /* a bar */
    drawBar(60, 30, 4, 16, 120); /* another one, of less contrast */
    drawBar(16, 50, 24, 4, 200); /* lies down: none */

    const RoiSize size = {W, H}, windows = {COLUMNS, ROWS};
    const Rect2i window = {0, 0, WINDOW_W, WINDOW_H};
    StatusCode status =
        rvxiSqrIntegral_8u32f64f_C1R(picture[0], W, sum[0], sizeof sum[0], squares[0], sizeof squares[0], size, 0, 0);
    if (status == StatusOk) {
        status = rvxiRectStdDev_32f_C1R(sum[0], sizeof sum[0], squares[0], sizeof squares[0], deviation[0],
                                        sizeof deviation[0], windows, window);
    }
    memset(mask, 255, sizeof mask);
    int32_t count = COLUMNS * ROWS;
    for (int i = 0; i < 2 && status == StatusOk; ++i) {
        HaarClassifier *stage = NULL;
        status = rvxiHaarClassifierInitAlloc_32f(&stage, rects[i], weights[i], &thresholds[i], &below[i], &otherwise[i],
                                                 rectCounts, 1);
        if (status == StatusOk) {
            status = rvxiApplyHaarClassifier_32f_C1R(sum[0], sizeof sum[0], deviation[0], sizeof deviation[0], mask[0],
                                                     COLUMNS, windows, &count, stage, stageThreshold);
            rvxiHaarClassifierFree_32f(stage);
        }
        printf("stage %d: %d windows pass\n", i + 1, count);
    }
    for (int y = 0; y < ROWS; ++y) {
        for (int x = 0; x < COLUMNS; ++x) {
            if (mask[y][x] != 0) {
                printf("window at %d, %d\n", x, y);
            }
        }
    }
    return status == StatusOk && count > 0 ? 0 : 1;
}
