/* How far two pictures are apart, where a mask says that it matters. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const uint8_t a[2][3] = {{10, 20, 30}, {40, 50, 60}}, b[2][3] = {{13, 20, 30}, {40, 46, 255}};
    const uint8_t mask[2][3] = {{1, 1, 1}, {1, 1, 0}};
    const RoiSize roi = {3, 2};
    double largest = 0, euclidean = 0;
    StatusCode status = rvxiNormDiff_Inf_8u_C1MR(a[0], 3, b[0], 3, mask[0], 3, roi, &largest);
    if (status == StatusOk) {
        status = rvxiNormDiff_L2_8u_C1MR(a[0], 3, b[0], 3, mask[0], 3, roi, &euclidean);
    }
    printf("status %d: largest difference %g, Euclidean %g\n", (int)status, largest, euclidean);
    return status == StatusOk && largest == 4 && euclidean == 5 ? 0 : 1;
}
