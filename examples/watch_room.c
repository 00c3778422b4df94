/* Watches a room with a fixed camera: a mixture of Gaussians learns the empty room, decides for every frame what does
 * not belong there, specks are removed from the decision, and the model learns from what is left. The frames are drawn:
 * a noisy room with a lamp that flickers, through which a visitor walks. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 160, Height = 120, Frames = 120, Enters = 60, Leaves = 90 };

static int visitorLeft(int frame) { return 5 * (frame - Enters); }

static void drawFrame(uint8_t *image, int frame) {
    static unsigned noise = 1;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            const int lamp = x >= 120 && x < 136 && y < 16, left = visitorLeft(frame);
            const int visitor = frame >= Enters && frame < Leaves && x >= left && x < left + 14 && y >= 40 && y < 100;
            noise = noise * 1664525u + 1013904223u;
            int value = visitor ? 40 : lamp ? (frame % 2 ? 230 : 150) : 100 + (x * 3 + y * 5) % 60;
            value += (int)(noise >> 24) % 7 - 3;
            if (noise >> 8 < 12000) { /* a dead pixel now and then */
                value = 255;
            }
            image[y * Width + x] = (uint8_t)value;
        }
    }
}

/* Removes what is smaller than 3x3 pixels, by a minimum and a maximum of the neighbours. */
static StatusCode removeSpecks(uint8_t *map, uint8_t *other, RoiSize size, uint8_t *buffer) {
    const RoiSize mask = {3, 3};
    const Point2i centre = {1, 1};
    const StatusCode status = rvxiFilterMinBorderReplicate_8u_C1R(map, Width, other, Width, size, mask, centre, buffer);
    return status != StatusOk
               ? status
               : rvxiFilterMaxBorderReplicate_8u_C1R(other, Width, map, Width, size, mask, centre, buffer);
}

int main(void) {
    static uint8_t frame[Width * Height], map[Width * Height], other[Width * Height];
    const RoiSize size = {Width, Height}, mask = {3, 3};
    FGMMParams params = {3, 4, 225, 16, 1125, 1, 0, 0.9f, 0}; /* grey pictures: every darkening would be a shadow */
    int32_t stateBytes = 0, minBytes = 0, maxBytes = 0;
    if (rvxiFGMMGetSize_8u(size, 1, &params, &stateBytes) != StatusOk ||
        rvxiFilterMinGetBufferSize_8u_C1R(Width, mask, &minBytes) != StatusOk ||
        rvxiFilterMaxGetBufferSize_8u_C1R(Width, mask, &maxBytes) != StatusOk) {
        return 1;
    }
    FGMMState *state = malloc((size_t)stateBytes);
    uint8_t *buffer = malloc((size_t)(minBytes > maxBytes ? minBytes : maxBytes));
    StatusCode status = state == NULL || buffer == NULL ? StatusNoMemory : rvxiFGMMInit_8u(size, 1, &params, state);
    int wrong = 0;
    for (int n = 0; status == StatusOk && n < Frames; ++n) {
        const float rate = n < 49 ? 1.0f / (float)(n + 1) : 0.02f; /* the first frames count alike */
        drawFrame(frame, n);
        status = rvxiFGMM_8u_C1R(frame, Width, map, Width, size, 0, state); /* 0: decides and does not learn */
        if (status == StatusOk) {
            status = removeSpecks(map, other, size, buffer);
        }
        if (status == StatusOk) {
            status = rvxiFGMMUpdate_8u_C1R(frame, Width, map, Width, size, rate, state);
        }
        int pixels = 0;
        for (int i = 0; i < Width * Height; ++i) {
            pixels += map[i] == ForegroundYes;
        }
        const int present = n >= Enters && n < Leaves;
        wrong += (pixels > 400) != present && n >= 10;
        if (n == Enters || n == Leaves) {
            printf("frame %d: %s, %d pixels\n", n, present ? "somebody enters" : "the room is empty again", pixels);
        }
    }
    free(state);
    free(buffer);
    printf("status %d, %d frames judged wrongly\n", status, wrong);
    return status != StatusOk || wrong != 0;
}
