/* A blur of a picture that is never held whole.
 *
 *     strip_blur IN.pgm OUT.pgm      8-bit binary PGM files of any size
 *     strip_blur                     a drawn picture of 6000 x 4000, for a look at the numbers
 *
 * Why by strips: a vertical filter of TAPS rows needs TAPS source rows for one output row, but never the rest of the
 * picture. So rows are read a strip at a time, filtered horizontally into a ring of row buffers, and combined
 * vertically from there. A camera's line buffer or a satellite picture larger than memory can be filtered like this;
 * and even where the picture would fit, the ring stays in the processor's cache while a whole intermediate picture
 * would travel to memory and back.
 *
 * The two stages of the pipeline take arrays of row pointers for this reason: the row stage writes wherever the ring
 * has room, and the column stage reads rows in the order that the caller names them. The vertical border is nothing but
 * a choice of pointers: above the first row and below the last one, that row's pointer is repeated. */
#include <rvxcv.h>
#include <stdio.h>
#include <stdlib.h>

enum { TAPS = 7, HALF = TAPS / 2, STRIP = 16, RING = STRIP + TAPS - 1 };
static const int16_t kernel[TAPS] = {1, 6, 15, 20, 15, 6, 1}; /* sums to 64: row results stay below 255 * 64 */
enum { ROW_DIVISOR = 1, COLUMN_DIVISOR = 64 * 64 };           /* divide once, at the end */

static int smaller(int a, int b) { return a < b ? a : b; }

/* The next rows of the picture: from the file, or drawn. */
static int readRows(FILE *in, uint8_t *rows, int first, int count, int width) {
    if (in != NULL) {
        return fread(rows, (size_t)width, (size_t)count, in) == (size_t)count;
    }
    for (int y = 0; y < count; ++y) {
        for (int x = 0; x < width; ++x) {
            rows[(size_t)y * width + x] =
                (uint8_t)((((x >> 6) ^ ((first + y) >> 6)) & 1) * 160 + (x * 7 + y * 13) % 64);
        }
    }
    return 1;
}

static int blur(FILE *in, FILE *out, RoiSize size) {
    const RoiSize strip = {size.width, STRIP};
    int32_t rowScratch, columnScratch;
    if (rvxiFilterRowBorderPipelineGetBufferSize_8u16s_C1R(strip, TAPS, &rowScratch) != StatusOk ||
        rvxiFilterColumnPipelineGetBufferSize_16s8u_C1R(strip, TAPS, &columnScratch) != StatusOk) {
        return 0;
    }
    const size_t width = (size_t)size.width,
                 scratchBytes = (size_t)(rowScratch > columnScratch ? rowScratch : columnScratch);
    uint8_t *source = malloc(width * STRIP), *result = malloc(width * STRIP), *scratch = malloc(scratchBytes);
    int16_t *ring = malloc(width * RING * sizeof *ring);
    int ok = source != NULL && result != NULL && scratch != NULL && ring != NULL;
    int filtered = 0; /* picture rows that went through the row stage; row y lies in ring row y % RING */
    double sum = 0;

    for (int y = 0; ok && y < size.height; y += STRIP) {
        const int end = smaller(y + STRIP, size.height), needed = smaller(end + HALF, size.height);

        while (ok && filtered < needed) {
            const int count = smaller(needed - filtered, STRIP);
            int16_t *rows[STRIP];
            for (int i = 0; i < count; ++i) {
                rows[i] = ring + (size_t)((filtered + i) % RING) * width;
            }
            ok =
                readRows(in, source, filtered, count, size.width) &&
                rvxiFilterRowBorderPipeline_8u16s_C1R(source, size.width, rows, (RoiSize){size.width, count}, kernel,
                                                      TAPS, HALF, BorderReplicate, 0, ROW_DIVISOR, scratch) == StatusOk;
            filtered += count;
        }

        const int16_t *window[RING]; /* output row y + i is computed from window[i] .. window[i + TAPS - 1] */
        for (int i = 0; i < end - y + TAPS - 1; ++i) {
            const int row = y - HALF + i;
            window[i] = ring + (size_t)((row < 0 ? 0 : smaller(row, size.height - 1)) % RING) * width;
        }
        ok = ok && rvxiFilterColumnPipeline_16s8u_C1R(window, result, size.width, (RoiSize){size.width, end - y},
                                                      kernel, TAPS, COLUMN_DIVISOR, scratch) == StatusOk;
        const size_t bytes = width * (size_t)(end - y);
        if (ok && out != NULL) {
            ok = fwrite(result, 1, bytes, out) == bytes;
        }
        for (size_t i = 0; ok && i < bytes; ++i) {
            sum += result[i];
        }
    }
    if (ok) {
        printf("%d x %d pixels blurred in %.1f KB of buffers; mean of the result %.3f\n", size.width, size.height,
               (double)(width * (2 * STRIP + RING * sizeof *ring) + scratchBytes) / 1024.0,
               sum / ((double)size.width * size.height));
    }
    free(source);
    free(result);
    free(scratch);
    free(ring);
    return ok;
}

int main(int argc, char **argv) {
    RoiSize size = {6000, 4000};
    FILE *in = NULL, *out = NULL;
    int ok = 1;
    if (argc == 3) {
        in = fopen(argv[1], "rb");
        out = fopen(argv[2], "wb");
        ok = in != NULL && out != NULL && fscanf(in, "P5 %d %d 255", &size.width, &size.height) == 2 &&
             fgetc(in) != EOF && size.width > 0 && size.height > 0 &&
             fprintf(out, "P5\n%d %d\n255\n", size.width, size.height) > 0;
    }
    ok = ok && blur(in, out, size);
    if (in != NULL) {
        fclose(in);
    }
    if (out != NULL && fclose(out) != 0) {
        ok = 0;
    }
    if (!ok) {
        fprintf(stderr, "strip_blur: cannot read, filter or write the picture (8-bit P5 without comments)\n");
    }
    return ok ? 0 : 1;
}
