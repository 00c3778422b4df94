/* Fills the holes of a depth map: pixels of which a depth camera has no answer, since they reflect, are black, or lie
 * in the shadow of something nearer. March continues the slopes of what is around a hole; diffusion spans a membrane.
 * Both leave the measured pixels as they are. */
#include <math.h>
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 160, Height = 120, Radius = 5 };

static float depth[Height][Width]; /* metres; NaN where the camera has no answer */
static float filled[Height][Width];
static uint8_t missing[Height][Width];

/* A floor that runs away from the camera. */
static double trueDepth(int x, int y) { return 1.5 + 0.02 * (Height - y) + 0.004 * x; }

/* Specks everywhere, a puddle that reflects, and a strip that something has shaded. */
static int measure(void) {
    int count = 0;
    unsigned noise = 1;
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            noise = noise * 1664525u + 1013904223u;
            const int u = x - 100, v = y - 70;
            const int puddle = u * u + 4 * v * v < 900, shade = x >= 30 && x < 38 && y > 20;
            missing[y][x] = (uint8_t)(puddle || shade || noise >> 24 < 8);
            count += missing[y][x];
            depth[y][x] = missing[y][x] ? NAN : (float)(trueDepth(x, y) + 0.002 * ((noise >> 16 & 255) / 127.5 - 1));
        }
    }
    return count;
}

static StatusCode fill(InpaintMethod method) {
    const RoiSize roi = {Width, Height};
    const int32_t step = Width * (int32_t)sizeof(float);
    int32_t bytes = 0;
    StatusCode status = rvxiInpaintGetBufferSize_32f_C1MR(roi, Radius, &bytes);
    if (status != StatusOk) {
        return status;
    }
    uint8_t *buffer = malloc((size_t)bytes);
    if (buffer == NULL) {
        return StatusNoMemory;
    }
    status = rvxiInpaint_32f_C1MR(depth[0], step, missing[0], Width, filled[0], step, roi, Radius, method, buffer);
    free(buffer);
    return status;
}

int main(void) {
    const int count = measure();
    for (InpaintMethod method = InpaintMarch; method <= InpaintDiffusion; ++method) {
        const StatusCode status = fill(method);
        if (status != StatusOk) {
            fprintf(stderr, "status %d\n", (int)status);
            return 1;
        }
        double worst = 0;
        for (int i = 0; i < Width * Height; ++i) {
            const double error = fabs((double)filled[i / Width][i % Width] - trueDepth(i % Width, i / Width));
            worst = error > worst ? error : worst;
        }
        printf("%s: %d of %d pixels filled, at most %.1f mm off\n", method == InpaintMarch ? "march" : "diffusion",
               count, Width * Height, 1000 * worst);
        /* Where a hole reaches the edge of the map, a membrane levels out. */
        if (worst > (method == InpaintMarch ? 0.02 : 0.1)) {
            return 1;
        }
    }
    return 0;
}
