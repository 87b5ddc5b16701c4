/* Compresses rows as a sensor delivers them: the standard input stands for it. The image is never in memory,
 * only its stream and one row. */

#include <stdio.h>
#include <stdlib.h>

#include "support.h"

static tesk_status push_rows(tesk_codec* codec, const tesk_image* image, unsigned char* row) {
    const size_t row_bytes = (size_t)image->width * image->bytes_per_pixel;
    tesk_status status = tesk_compress_begin(codec, image, 0);
    for (uint32_t r = 0; r < image->height && status == TESK_OK; ++r) {
        if (fread(row, 1, row_bytes, stdin) != row_bytes) {
            fprintf(stderr, "the input ends in row %u of %u\n", (unsigned)r,
                    (unsigned)image->height);
            tesk_abandon(codec);
            return TESK_STOPPED;
        }
        status = tesk_compress_rows(codec, row, 0, 1);
    }
    return status;
}

static int compress(tesk_codec* codec, const tesk_image* image, unsigned char* row,
                    const char* stream_name) {
    void* block = NULL;
    tesk_result result = TESK_RESULT_INIT;
    tesk_status status = push_rows(codec, image, row);
    if (status == TESK_OK) status = tesk_compress_end(codec, &block, &result);
    if (status == TESK_NOT_RESTORABLE) return fail(stream_name, tesk_loss_message(result.loss));
    if (status != TESK_OK) return fail(stream_name, tesk_status_message(status));
    const bool written = write_file(stream_name, block, result.stream_bytes);
    tesk_release_block(codec, block);
    if (!written) return FAILURE;
    printf("%zu bytes become %zu, in %zu bytes of memory\n", raw_bytes(image), result.stream_bytes,
           result.peak_memory_bytes);
    return SUCCESS;
}

int main(int count, char** arguments) {
    if (count != 6) {
        fputs("usage: push_rows " GEOMETRY_USAGE " STREAM <RAW\n", stderr);
        return WRONG_USAGE;
    }
    tesk_image image;
    if (!read_geometry(arguments + 1, &image)) return FAILURE;
    unsigned char* row = malloc((size_t)image.width * image.bytes_per_pixel + 1);
    tesk_codec* codec = NULL;
    const tesk_status status = row == NULL ? TESK_OUT_OF_MEMORY : tesk_create(NULL, &codec);
    const int exit_status = status == TESK_OK ? compress(codec, &image, row, arguments[5])
                                              : fail("push_rows", tesk_status_message(status));
    tesk_destroy(codec);
    free(row);
    return exit_status;
}
