/* Decompresses a stream that may come from anywhere: looks at its geometry first, and limits what
 * the codec may use for it. */

#include <stdio.h>
#include <stdlib.h>

#include "support.h"

enum { MEBI = 1024 * 1024 };

static int decompress(tesk_codec* codec, const content* stream, const tesk_image* image,
                      char** names) {
    const size_t size = raw_bytes(image);
    unsigned char* pixels = malloc(size + 1); /* an image without pixels is no lack of memory */
    if (pixels == NULL) return fail(names[0], "the image does not fit into memory");
    const tesk_status status =
        tesk_decompress(codec, stream->bytes, stream->size, pixels, size, 0, NULL);
    const bool usable = status == TESK_OK || status == TESK_CUT;
    if (!usable) fail(names[0], tesk_status_message(status));
    const bool written = usable && write_file(names[1], pixels, size);
    free(pixels);
    if (!written) return FAILURE;
    printf("%u x %u pixels of %u bytes, %u bits: %s\n", image->width, image->height,
           image->bytes_per_pixel, image->bits_per_pixel, tesk_status_message(status));
    return SUCCESS;
}

static int decompress_within_limits(const content* stream, char** names) {
    tesk_options limits = TESK_OPTIONS_INIT;
    limits.max_pixels = (size_t)256 * MEBI;
    limits.max_memory_bytes = (size_t)2048 * MEBI;

    tesk_image image = TESK_IMAGE_INIT;
    tesk_status status = tesk_probe(stream->bytes, stream->size, &image);
    if (status != TESK_OK) return fail(names[0], tesk_status_message(status));
    if ((size_t)image.width * image.height > limits.max_pixels)
        return fail(names[0], tesk_status_message(TESK_LIMIT_EXCEEDED));

    tesk_codec* codec;
    status = tesk_create(&limits, &codec);
    if (status != TESK_OK) return fail(names[0], tesk_status_message(status));
    const int exit_status = decompress(codec, stream, &image, names);
    tesk_destroy(codec);
    return exit_status;
}

int main(int count, char** arguments) {
    if (count != 3) {
        fputs("usage: decompress STREAM RAW\n", stderr);
        return WRONG_USAGE;
    }
    content stream;
    if (!read_file(arguments[1], &stream)) return FAILURE;
    const int exit_status = decompress_within_limits(&stream, arguments + 1);
    free(stream.bytes);
    return exit_status;
}
