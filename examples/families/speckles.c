/* Removes patches of a disparity map that are too small to be true. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

enum { Width = 16, Height = 12 };

int main(void) {
    static uint8_t disparity[Height][Width];
    memset(disparity, 20, sizeof disparity);
    disparity[4][4] = disparity[4][5] = 90; /* two pixels that stand alone */
    memset(&disparity[8][2], 60, 12);       /* and an object of twelve */
    const RoiSize roi = {Width, Height};
    int32_t bytes = 0;
    StatusCode status = rvxiMarkSpecklesGetBufferSize_8u_C1R(roi, &bytes);
    uint8_t *buffer = status == StatusOk ? malloc((size_t)bytes) : NULL;
    status = rvxiMarkSpeckles_8u_C1IR(disparity[0], Width, roi, 0, 4, 2, NormL1, buffer);
    free(buffer);
    printf("status %d: speck %d, object %d\n", (int)status, disparity[4][4], disparity[8][2]);
    return status == StatusOk && disparity[4][4] == 0 && disparity[4][5] == 0 && disparity[8][2] == 60 ? 0 : 1;
}
