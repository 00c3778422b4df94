/* How far a scanned page is turned: the lines of writing stand on straight lines, and the strongest of those within 15
 * degrees of the horizontal tell. The page is made up here; a program would read one. */
#include <rvxcv.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 800, height = 600, capacity = 9 };

static const float degree = 0.01745329f;

/* Lines of words, dark on white, turned by an angle in degrees. */
static void writePage(uint8_t *page, double turn) {
    const double c = cos(turn * degree), s = sin(turn * degree);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double u = c * x + s * y, v = c * y - s * x; /* along a line of writing, across it */
            const int line = (int)floor(v / 24), word = (int)floor((u + 31 * line) / 70);
            const int inLine = v - 24 * line > 8 && v - 24 * line < 18;
            const int inWord = (u + 31 * line) - 70 * word < 50 + 7 * (word % 3);
            page[y * width + x] = inLine && inWord ? 40 : 230;
        }
    }
}

static int compare(const void *a, const void *b) {
    const float left = ((const HoughLine *)a)->theta, right = ((const HoughLine *)b)->theta;
    return (left > right) - (left < right);
}

int main(void) {
    const double turn = 3.4;
    const RoiSize size = {width, height};
    const HoughResolution step = {1, 0.1f * degree};
    const HoughLine region[2] = {{-2000, 75 * degree}, {2000, 105 * degree}};
    uint8_t *page = malloc(width * height), *marks = calloc(width * height, 1), *buffer;
    HoughLine lines[capacity];
    int32_t bytes = 0, count = 0;
    if (rvxiHoughLineGetSize_8u_C1R(size, step, capacity, &bytes) != StatusOk) {
        return 1;
    }
    buffer = malloc((size_t)bytes);
    if (page == NULL || marks == NULL || buffer == NULL) {
        return 1;
    }
    writePage(page, turn);
    /* What the writing stands on: dark pixels above bright ones. */
    for (int i = 0; i < width * (height - 1); ++i) {
        marks[i] = page[i] < 128 && page[i + width] >= 128;
    }
    /* StatusResultTruncated: there are more than these, which are the strongest. */
    if (rvxiHoughLine_Region_8u32f_C1R(marks, width, size, 60, lines, capacity, &count, buffer, step, region) < 0) {
        printf("no lines of writing\n");
        return 1;
    }
    qsort(lines, (size_t)count, sizeof lines[0], compare);
    const double found = lines[count / 2].theta / degree - 90; /* the median does not mind a stray line */
    printf("the page is turned by %.1f degrees\n", found);
    free(buffer);
    free(marks);
    free(page);
    return fabs(found - turn) < 0.3 ? 0 : 1;
}
