/* Paints what is within 10 levels of the seed and connected with it, and tells how large it is. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 8 };

int main(void) {
    static uint8_t image[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        const int x = i % Width;
        image[i / Width][x] = (uint8_t)(x == 6 ? 200 : 100 + x % 3); /* a wall in column 6 */
    }
    const RoiSize roi = {Width, Height};
    const Point2i seed = {2, 2};
    ConnectedComponent region;
    int32_t bytes = 0;
    StatusCode status = rvxiFloodFillGetSize(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiFloodFill_Range4Con_8u_C1IR(image[0], Width, roi, seed, 0, 10, 10, &region, buffer);
    free(buffer);
    if (status != StatusOk) {
        return 1;
    }
    printf("%g pixels, %d columns from %d on\n", region.area, (int)region.rect.width, (int)region.rect.x);
    return region.area == 6 * Height && region.rect.width == 6 && image[7][5] == 0 && image[7][7] != 0 ? 0 : 1;
}
