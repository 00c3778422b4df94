/* The shortest program: which library is this, and the absolute difference of two small images. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    const uint8_t a[2][4] = {{10, 20, 30, 40}, {50, 60, 70, 80}};
    const uint8_t b[2][4] = {{11, 18, 30, 44}, {42, 60, 86, 48}};
    uint8_t difference[2][4];
    const RoiSize size = {4, 2};
    const StatusCode status = rvxiAbsDiff_8u_C1R(a[0], 4, b[0], 4, difference[0], 4, size);

    printf("%s %s: status %d, differences", rvxcvGetLibVersion()->libraryName, rvxcvGetLibVersion()->versionText,
           status);
    for (int i = 0; i < 8; ++i) {
        printf(" %d", difference[i / 4][i % 4]);
    }
    printf("\n");
    return status == StatusOk ? 0 : 1;
}
