/* A mean over 3x3 pixels from the two stages. The rows above and below the image are its first and last one again:
 * pointers to them, no copies. examples/strip_blur.c keeps only as many rows as the kernel is high. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { Width = 12, Height = 6 };

int main(void) {
    static float image[Height][Width], row[Height][Width], mean[Height][Width];
    image[2][5] = 9;
    float *rows[Height];
    const float *around[Height + 2];
    for (int y = 0; y < Height; ++y) {
        rows[y] = row[y];
        around[y + 1] = row[y];
    }
    around[0] = row[0];
    around[Height + 1] = row[Height - 1];

    const RoiSize roi = {Width, Height};
    const float across[3] = {1, 1, 1}, down[3] = {1.0F / 9, 1.0F / 9, 1.0F / 9};
    const int32_t step = (int32_t)sizeof image[0];
    int32_t rowBytes = 0, columnBytes = 0;
    rvxiFilterRowBorderPipelineGetBufferSize_32f_C1R(roi, 3, &rowBytes);
    rvxiFilterColumnPipelineGetBufferSize_32f_C1R(roi, 3, &columnBytes);
    uint8_t *buffer = malloc((size_t)(rowBytes > columnBytes ? rowBytes : columnBytes));
    StatusCode status =
        rvxiFilterRowBorderPipeline_32f_C1R(image[0], step, rows, roi, across, 3, 1, BorderReplicate, 0, buffer);
    if (status == StatusOk) {
        status = rvxiFilterColumnPipeline_32f_C1R(around, mean[0], step, roi, down, 3, buffer);
    }
    free(buffer);
    printf("status %d: %g %g %g %g\n", (int)status, mean[1][3], mean[1][4], mean[2][5], mean[3][6]);
    return status == StatusOk && mean[1][3] == 0 && mean[1][4] == 1 && mean[2][5] == 1 && mean[3][6] == 1 ? 0 : 1;
}
