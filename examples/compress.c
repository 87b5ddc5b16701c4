/* Compresses a raw image into a stream, without loss or, with a budget, to that many bytes. */

#include <stdio.h>
#include <stdlib.h>

#include "support.h"

static int compress(tesk_codec* codec, const tesk_image* image, const void* pixels, size_t budget,
                    const char* stream_name) {
    void* block;
    tesk_result result = TESK_RESULT_INIT;
    const tesk_status status =
        tesk_compress_to_block(codec, image, pixels, 0, budget, &block, &result);
    if (status != TESK_OK && status != TESK_CUT)
        return fail(stream_name, tesk_status_message(status));
    const bool written = write_file(stream_name, block, result.stream_bytes);
    tesk_release_block(codec, block);
    if (!written) return FAILURE;
    printf("%zu bytes become %zu: %s\n", raw_bytes(image), result.stream_bytes,
           tesk_status_message(status));
    return SUCCESS;
}

static int usage(void) {
    fputs("usage: compress " IMAGE_USAGE " STREAM [BUDGET_BYTES]\n", stderr);
    return WRONG_USAGE;
}

int main(int count, char** arguments) {
    if (count != 7 && count != 8) return usage();
    const size_t budget = count == 8 ? strtoul(arguments[7], NULL, 10) : 0;
    if (count == 8 && budget < 16) return fail(arguments[7], "not a budget of 16 bytes or more");

    tesk_image image;
    content pixels;
    if (!read_image(arguments + 1, &image, &pixels)) return FAILURE;
    tesk_codec* codec;
    const tesk_status status = tesk_create(NULL, &codec);
    const int exit_status = status == TESK_OK
                                ? compress(codec, &image, pixels.bytes, budget, arguments[6])
                                : fail("compress", tesk_status_message(status));
    tesk_destroy(codec);
    free(pixels.bytes);
    return exit_status;
}
