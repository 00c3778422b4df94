/* The sum of any rectangle takes four elements of the integral image. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 12, Height = 9 };

int main(void) {
    static uint8_t image[Height][Width];
    static int32_t sum[Height + 1][Width + 1];
    int32_t expected = 0;
    const Rect2i rect = {3, 2, 5, 4};
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            image[y][x] = (uint8_t)(7 * x + 11 * y);
            const int inside = x >= rect.x && x < rect.x + rect.width && y >= rect.y && y < rect.y + rect.height;
            expected += inside ? image[y][x] : 0;
        }
    }
    const RoiSize roi = {Width, Height};
    const StatusCode status = rvxiIntegral_8u32s_C1R(image[0], Width, sum[0], (int32_t)sizeof sum[0], roi, 0);
    const int32_t *above = &sum[rect.y][rect.x], *below = &sum[rect.y + rect.height][rect.x];
    const int32_t found = below[rect.width] - below[0] - above[rect.width] + above[0];
    printf("status %d: %d, counted %d\n", (int)status, (int)found, (int)expected);
    return status == StatusOk && found == expected ? 0 : 1;
}
