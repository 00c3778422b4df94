/* A patch of 3x3 pixels around a point between pixels: on a ramp the values between are exact. */
#include <rvxcv.h>
#include <stdio.h>

enum { Width = 12, Height = 10 };

int main(void) {
    float image[Height][Width], patch[3][3];
    for (int y = 0; y < Height; ++y) {
        for (int x = 0; x < Width; ++x) {
            image[y][x] = 4.0F * (float)x + 8.0F * (float)y;
        }
    }
    const RoiSize roi = {Width, Height}, patchSize = {3, 3};
    const Point2f centre = {5.25F, 4.5F};
    const StatusCode status = rvxiCopySubpix_32f_C1R(image[0], (int32_t)sizeof image[0], roi, patch[0],
                                                     (int32_t)sizeof patch[0], patchSize, centre);
    if (status != StatusOk) {
        return 1;
    }
    printf("in the middle %g, to its right %g\n", patch[1][1], patch[1][2]);
    return patch[1][1] == 4 * 5.25F + 8 * 4.5F && patch[1][2] == patch[1][1] + 4 && patch[2][1] == patch[1][1] + 8 ? 0
                                                                                                                   : 1;
}
