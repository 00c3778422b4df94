/* Where the lines of writing are on a page that was lit from one corner. No threshold tells ink from paper everywhere:
 * the paper in the dark corner is darker than the ink in the bright one. So a ball rolls over the page, too large to
 * fall into a letter, and what it touches is the paper's brightness; divided by it, the page is evenly lit. */
#include <rvxcv.h>

#include <math.h>
#include <stdio.h>
#include <stdlib.h>

enum { width = 640, height = 480, radius = 20, side = 2 * radius + 1, firstLine = 40, spacing = 30, lines = 13 };

/* Lines of words, 12 pixels high, on paper that gets darker towards the lower right corner. */
static void writePage(uint8_t *page) {
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            const double paper = 245 - 190 * (0.6 * x / width + 0.4 * y / height);
            const int line = (y - firstLine + spacing) / spacing - 1, inLine = y - firstLine - line * spacing;
            const int inWord = (x + 23 * line) % 61 < 45 && x % 9 < 6 && x > 30 && x < width - 30;
            const int ink = line >= 0 && line < lines && inLine < 12 && inWord;
            page[y * width + x] = (uint8_t)(ink ? 0.45 * paper : paper);
        }
    }
}

/* The paper's brightness: a dilation by the ball, then an erosion. */
static int findPaper(const uint8_t *page, uint8_t *paper) {
    const RoiSize size = {width, height}, ballSize = {side, side};
    static int32_t ball[side * side];
    int32_t specBytes, bufferBytes;
    for (int i = 0; i < side * side; ++i) {
        const int x = i % side - radius, y = i / side - radius, square = radius * radius - x * x - y * y;
        ball[i] = square < 0 ? INT32_MIN : (int32_t)lround(sqrt(square)) - radius;
    }
    if (rvxiGrayMorphologyGetSize_8u_C1R(width, ballSize, &specBytes, &bufferBytes) != StatusOk) {
        return 0;
    }
    GrayMorphSpec *spec = malloc((size_t)specBytes);
    uint8_t *buffer = malloc((size_t)bufferBytes), *between = malloc(width * height);
    const int done =
        spec != NULL && buffer != NULL && between != NULL &&
        rvxiGrayMorphologyInit_8u_C1R(width, ball, ballSize, spec) == StatusOk &&
        rvxiGrayDilateBorder_8u_C1R(page, width, between, width, size, BorderReplicate, 0, spec, buffer) == StatusOk &&
        rvxiGrayErodeBorder_8u_C1R(between, width, paper, width, size, BorderReplicate, 0, spec, buffer) == StatusOk;
    free(between);
    free(buffer);
    free(spec);
    return done;
}

int main(void) {
    uint8_t *page = malloc(width * height), *paper = malloc(width * height);
    if (page == NULL || paper == NULL) {
        return 1;
    }
    writePage(page);
    if (!findPaper(page, paper)) {
        return 1;
    }
    int found = 0, right = 0, begin = -1;
    for (int y = 0; y <= height; ++y) {
        int ink = 0;
        for (int x = 0; y < height && x < width; ++x) {
            ink += 3 * page[y * width + x] < 2 * paper[y * width + x]; /* less than two thirds of the paper around */
        }
        if (ink > width / 20 && begin < 0) {
            begin = y;
        } else if (ink <= width / 20 && begin >= 0) {
            printf("line %2d: rows %3d to %3d\n", found + 1, begin, y - 1);
            right += begin == firstLine + found * spacing && y == begin + 12;
            ++found;
            begin = -1;
        }
    }
    free(paper);
    free(page);
    return found == lines && right == lines ? 0 : 1;
}
