/* Finds the sharpest window of a picture, as a camera's autofocus or a choice among frames needs it.
 *
 * Sharp means: fine detail. A Laplacian leaves nothing else, and its deviation in a window says how much of it there
 * is. Integral images make every window cost the same four look-ups, whatever its size. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 160, Height = 120, WindowWidth = 32, WindowHeight = 24 };
enum { PositionsX = Width - WindowWidth + 1, PositionsY = Height - WindowHeight + 1 };
enum { SharpX = 97, SharpY = 41 }; /* where the drawn picture is sharp */

static uint8_t picture[Height][Width];
static uint8_t detail[Height][Width];
static int32_t sum[Height + 1][Width + 1];
static double squares[Height + 1][Width + 1];
static float deviation[PositionsY][PositionsX];

/* A checkered pattern with steep edges in one window; elsewhere its edges are ramps, and brighter. */
static void draw(void) {
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int sharp = x >= SharpX && x < SharpX + WindowWidth && y >= SharpY && y < SharpY + WindowHeight;
            const int u = abs(x % 16 - 8), v = abs(y % 16 - 8); /* 0..8 */
            picture[y][x] = (uint8_t)(sharp ? 80 + 60 * ((x / 4 + y / 4) % 2) : 40 + 12 * u + 12 * v);
        }
    }
}

/* Fine detail, around 128 so that both signs fit. */
static StatusCode findDetail(void) {
    static int16_t laplacian[Height][Width];
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiFilterLaplacianGetBufferSize_8u16s_C1R(roi, Mask3x3, &bytes);
    if (status != StatusOk) {
        return status;
    }
    uint8_t *buffer = malloc((size_t)bytes);
    if (buffer == NULL) {
        return StatusNoMemory;
    }
    status = rvxiFilterLaplacianBorder_8u16s_C1R(picture[0], Width, laplacian[0], Width * (int32_t)sizeof(int16_t), roi,
                                                 Mask3x3, BorderReplicate, 0, buffer);
    free(buffer);
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int value = 128 + laplacian[y][x] / 4;
            detail[y][x] = (uint8_t)(value < 0 ? 0 : value > 255 ? 255 : value);
        }
    }
    return status;
}

int main(void) {
    draw();
    StatusCode status = findDetail();

    /* One row and one column more than the picture. Squares in double: they outgrow 32 bits soon. */
    const RoiSize roi = {Width, Height}, positions = {PositionsX, PositionsY};
    const int32_t sumStep = (Width + 1) * (int32_t)sizeof(int32_t), squareStep = (Width + 1) * (int32_t)sizeof(double);
    if (status == StatusOk) {
        status = rvxiSqrIntegral_8u32s64f_C1R(detail[0], Width, sum[0], sumStep, squares[0], squareStep, roi, 0, 0);
    }
    if (status == StatusOk) {
        const Rect2i window = {0, 0, WindowWidth, WindowHeight}; /* begins at the position itself */
        status = rvxiRectStdDev_32s32f_C1R(sum[0], sumStep, squares[0], squareStep, deviation[0],
                                           PositionsX * (int32_t)sizeof(float), positions, window);
    }
    if (status != StatusOk) {
        fprintf(stderr, "status %d\n", (int)status);
        return 1;
    }

    int bestX = 0, bestY = 0;
    for (int y = 0; y < PositionsY; ++y) {
        for (int x = 0; x < PositionsX; ++x) {
            if (deviation[y][x] > deviation[bestY][bestX]) {
                bestX = x;
                bestY = y;
            }
        }
    }
    printf("sharpest %d x %d window at (%d, %d): detail %.1f, at the top left %.1f\n", WindowWidth, WindowHeight, bestX,
           bestY, (double)deviation[bestY][bestX], (double)deviation[0][0]);
    return abs(bestX - SharpX) <= 1 && abs(bestY - SharpY) <= 1 ? 0 : 1;
}
