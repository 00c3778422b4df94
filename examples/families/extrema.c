/* The darkest and the brightest pixel, and where they are: of equal ones the first. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const uint8_t image[2][4] = {{50, 200, 7, 60}, {7, 80, 200, 90}};
    const RoiSize roi = {4, 2};
    double darkest = 0, brightest = 0;
    Point2i dark, bright;
    const StatusCode status = rvxiMinMaxIndx_8u_C1R(image[0], 4, roi, &darkest, &brightest, &dark, &bright);
    if (status != StatusOk) {
        return 1;
    }
    printf("%g at (%d, %d), %g at (%d, %d)\n", darkest, (int)dark.x, (int)dark.y, brightest, (int)bright.x,
           (int)bright.y);
    return darkest == 7 && dark.x == 2 && dark.y == 0 && brightest == 200 && bright.x == 1 && bright.y == 0 ? 0 : 1;
}
