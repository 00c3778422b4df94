/* Cleans a thresholded image: an erosion removes specks smaller than the mask, a dilation gives what is left its size
 * back. One analysis of the mask serves both. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 64, height = 24 };

static void print(const char *title, const uint8_t *image) {
    printf("%s\n", title);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            putchar(image[y * width + x] ? '#' : '.');
        }
        putchar('\n');
    }
}

int main(void) {
    /* What a threshold may leave: two objects and specks of noise. */
    static uint8_t image[height * width], eroded[height * width], cleaned[height * width];
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const int disc = (x - 18) * (x - 18) + 4 * (y - 12) * (y - 12) < 300;
            const int box = x >= 40 && x < 58 && y >= 6 && y < 18;
            image[y * width + x] = disc || box || (x * 7 + y * 13) % 41 == 0 ? 255 : 0;
        }
    }

    /* A 3x3 cross; any non-zero byte marks a position of the mask. */
    const uint8_t cross[9] = {0, 1, 0, 1, 1, 1, 0, 1, 0};
    const RoiSize maskSize = {3, 3}, roi = {width, height};
    int32_t specSize, bufferSize;
    StatusCode status = rvxiMorphologyBorderGetSize_8u_C1R(width, maskSize, &specSize, &bufferSize);
    if (status != StatusOk) {
        return 1;
    }
    MorphSpec *spec = malloc((size_t)specSize);
    uint8_t *buffer = malloc((size_t)bufferSize);
    if (spec == NULL || buffer == NULL) {
        return 1;
    }
    status = rvxiMorphologyBorderInit_8u_C1R(width, cross, maskSize, spec, buffer);
    if (status == StatusOk) {
        status = rvxiErodeBorder_8u_C1R(image, width, eroded, width, roi, BorderReplicate, 0, spec, buffer);
    }
    if (status == StatusOk) {
        status = rvxiDilateBorder_8u_C1R(eroded, width, cleaned, width, roi, BorderReplicate, 0, spec, buffer);
    }
    free(buffer);
    free(spec);
    if (status != StatusOk) {
        fprintf(stderr, "status %d\n", status);
        return 1;
    }
    print("thresholded:", image);
    print("cleaned:", cleaned);
    return 0;
}
