/* The outline between two segments: on the upper left side of the edge. */
#include <rvxcv.h>
#include <stdio.h>

int main(void) {
    uint8_t labels[4][6] = {{1, 1, 1, 2, 2, 2}, {1, 1, 1, 2, 2, 2}, {1, 1, 1, 2, 2, 2}, {1, 1, 1, 2, 2, 2}};
    const RoiSize roi = {6, 4};
    const StatusCode status = rvxiBoundSegments_8u_C1IR(labels[0], 6, roi, 255, NormL1);
    int outlined = 0;
    for (int y = 0; y < 4; ++y) {
        outlined += labels[y][1] == 1 && labels[y][2] == 255 && labels[y][3] == 2;
    }
    printf("status %d: %d of 4 rows\n", (int)status, outlined);
    return status == StatusOk && outlined == 4 ? 0 : 1;
}
