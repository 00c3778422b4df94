/* Half the size: the next level of a pyramid. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 16, Height = 12 };

int main(void) {
    static uint8_t image[Height][Width], half[Height / 2][Width / 2];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (uint8_t)(10 * (i % Width));
    }
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiPyrDownGetBufSize_Gauss5x5(Width, PixelType8u, 1, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiPyrDown_Gauss5x5_8u_C1R(image[0], Width, half[0], Width / 2, roi, buffer);
    free(buffer);
    printf("status %d: %d %d %d\n", (int)status, half[2][1], half[2][2], half[2][3]);
    return status == StatusOk && half[2][1] == 20 && half[2][2] == 40 && half[2][3] == 60 ? 0 : 1;
}
