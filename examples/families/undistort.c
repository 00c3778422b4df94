/* A lens that bends nothing leaves the picture as it is; one that does leaves the middle in its place. */
#include <rvxcv.h>
#include <stdio.h>
#include <string.h>

enum { Width = 65, Height = 49 };

int main(void) {
    static uint8_t image[Height][Width], straight[Height][Width];
    for (int i = 0; i < Width * Height; ++i) {
        image[i / Width][i % Width] = (uint8_t)(3 * (i % Width));
    }
    const RoiSize roi = {Width, Height};
    StatusCode status =
        rvxiUndistortRadial_8u_C1R(image[0], Width, straight[0], Width, roi, NULL, 50, 50, 32, 24, 0.0F, 0.0F);
    if (status != StatusOk || memcmp(image, straight, sizeof image) != 0) {
        return 1;
    }
    status = rvxiUndistortRadial_8u_C1R(image[0], Width, straight[0], Width, roi, NULL, 50, 50, 32, 24, -0.2F, 0.0F);
    printf("status %d: middle %d, thirty columns to the right %d instead of %d\n", (int)status, straight[24][32],
           straight[24][62], image[24][62]);
    /* A barrel: the lens had drawn together what is now pulled apart. */
    return status == StatusOk && straight[24][32] == image[24][32] && straight[24][62] < image[24][62] ? 0 : 1;
}
