/* Counts coins that touch each other, and says how large each one is.
 *
 * Labelling alone sees a heap of touching coins as one object. The distance to the background has a peak in the middle
 * of every coin and a saddle where two of them meet: the peaks become markers, and the watershed of the inverted
 * distance cuts along the saddles. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 240, Height = 120, Heaps = 3, Coins = 9, MaxMarkers = 1000 };

static const struct {
    int x, y, radius;
} coins[Coins] = {{30, 30, 19},  {66, 34, 18},  {48, 65, 20},  {83, 68, 17}, {130, 60, 20},
                  {168, 52, 19}, {150, 92, 18}, {185, 88, 20}, {210, 25, 17}};

static uint8_t mask[Height][Width], inner[Height][Width], relief[Height][Width];
static float distance[Height][Width];
static int32_t label[Height][Width];
static const RoiSize roi = {Width, Height};

/* Pixels of a coin: in mask they are not zero. */
static void draw(void) {
    for (int i = 0; i < Coins; ++i) {
        for (int y = 0; y < Height; ++y) {
            for (int x = 0; x < Width; ++x) {
                const int dx = x - coins[i].x, dy = y - coins[i].y;
                if (dx * dx + dy * dy <= coins[i].radius * coins[i].radius) {
                    mask[y][x] = 255;
                }
            }
        }
    }
}

/* The largest of three scratch sizes serves all three functions, one after the other. */
static uint8_t *scratch(void) {
    int32_t bytes[3] = {0, 0, 0}, most = 0;
    if (rvxiTrueDistanceTransformGetBufferSize_8u32f_C1R(roi, &bytes[0]) != StatusOk ||
        rvxiLabelMarkersGetBufferSize_8u32s_C1R(roi, &bytes[1]) != StatusOk ||
        rvxiSegmentWatershedGetBufferSize_8u32s_C1R(roi, &bytes[2]) != StatusOk) {
        return NULL;
    }
    for (int i = 0; i < 3; ++i) {
        most = bytes[i] > most ? bytes[i] : most;
    }
    return malloc((size_t)most);
}

static StatusCode labelParts(const uint8_t *image, int32_t *count, uint8_t *buffer) {
    return rvxiLabelMarkers_8u32s_C1R(image, Width, label[0], Width * (int32_t)sizeof(int32_t), roi, 1, MaxMarkers,
                                      NormInf, count, buffer);
}

static StatusCode countCoins(uint8_t *buffer, int32_t *heaps, int32_t *count) {
    StatusCode status = labelParts(mask[0], heaps, buffer);
    if (status != StatusOk) {
        return status;
    }
    status =
        rvxiTrueDistanceTransform_8u32f_C1R(mask[0], Width, distance[0], Width * (int32_t)sizeof(float), roi, buffer);
    float most = 0;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            most = distance[y][x] > most ? distance[y][x] : most;
        }
    }
    /* What lies deep inside a coin: far enough up that neighbouring peaks do not touch, and low enough for the smallest
     * coin. The relief falls towards the middle of a coin. */
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            inner[y][x] = distance[y][x] > 0.7f * most;
            relief[y][x] = (uint8_t)(255 - (int)(255 * distance[y][x] / most));
        }
    }
    if (status == StatusOk) {
        status = labelParts(inner[0], count, buffer);
    }
    /* The ground is a wall: negative, so that the coins do not flood it. */
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            label[y][x] = mask[y][x] != 0 ? label[y][x] : -1;
        }
    }
    return status != StatusOk
               ? status
               : rvxiSegmentWatershed_8u32s_C1IR(relief[0], Width, label[0], Width * (int32_t)sizeof(int32_t), roi,
                                                 NormInf, SegmentNoLines, buffer);
}

int main(void) {
    int32_t heaps = 0, count = 0;
    draw();
    uint8_t *const buffer = scratch();
    const StatusCode status = buffer != NULL ? countCoins(buffer, &heaps, &count) : StatusNoMemory;
    free(buffer);
    if (status != StatusOk || count > MaxMarkers) {
        fprintf(stderr, "status %d, %d markers\n", (int)status, (int)count);
        return 1;
    }
    int32_t area[MaxMarkers + 1] = {0};
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            area[label[y][x] > 0 ? label[y][x] : 0] += 1;
        }
    }
    printf("%d heaps, %d coins\n", (int)heaps, (int)count);
    int wrong = heaps != Heaps || count != Coins;
    for (int i = 0; i < Coins; ++i) {
        const int32_t own = label[coins[i].y][coins[i].x];
        const double disc = 3.14159265 * coins[i].radius * coins[i].radius;
        printf("coin at %d,%d: %d pixels\n", coins[i].x, coins[i].y, own > 0 ? (int)area[own] : 0);
        /* Coins overlap a little, and the cut need not run in the middle. */
        wrong |= own <= 0 || area[own] < 0.94 * disc || area[own] > 1.06 * disc;
    }
    return wrong;
}
