/* Makes a thumbnail of a stream, a PGM or PPM file whose sides are at most so many pixels: the stream is
 * decompressed at the size that fits, which takes a small part of the time and of the memory. */

#include <stdio.h>
#include <stdlib.h>

#include "picture.h"

static uint32_t longer_side(const tesk_image* image) {
    return image->width > image->height ? image->width : image->height;
}

/* Returns: as many levels as it takes, or as there are. */
static uint32_t levels_for(const tesk_image* image, uint32_t most) {
    uint32_t levels = 0;
    tesk_image reduced = *image;
    while (longer_side(&reduced) > most &&
           tesk_reduced_image(image, levels + 1, &reduced) == TESK_OK)
        ++levels;
    return levels;
}

static int make_thumbnail(const content* stream, uint32_t most, char** names) {
    tesk_image image = TESK_IMAGE_INIT;
    tesk_status status = tesk_probe(stream->bytes, stream->size, &image);
    if (status != TESK_OK) return fail(names[0], tesk_status_message(status));

    tesk_codec* codec;
    tesk_options limits = TESK_OPTIONS_INIT;
    limits.max_pixels = (size_t)64
                        << 20; /* of the thumbnail, before steps: the image may have more */
    status = tesk_create(&limits, &codec);
    if (status != TESK_OK) return fail(names[0], tesk_status_message(status));
    const uint32_t levels = levels_for(&image, most);
    unsigned char* pixels = reduced_pixels(codec, stream, levels, &image, &status);
    tesk_destroy(codec);
    if (pixels == NULL) return fail(names[0], tesk_status_message(status));

    /* Five levels are not enough for a small thumbnail of a huge image. */
    const uint32_t step = (longer_side(&image) + most - 1) / most;
    const bool written = write_picture(names[2], &image, pixels, step == 0 ? 1 : step);
    free(pixels);
    if (!written) return FAILURE;
    printf("1 : %u, %s\n", (1U << levels) * (step == 0 ? 1 : step), tesk_status_message(status));
    return SUCCESS;
}

int main(int count, char** arguments) {
    const long most = count == 4 ? strtol(arguments[2], NULL, 10) : 0;
    if (most < 1 || most > 65535) {
        fputs("usage: thumbnail STREAM MOST_PIXELS_PER_SIDE PICTURE\n", stderr);
        return WRONG_USAGE;
    }
    content stream;
    if (!read_file(arguments[1], &stream)) return FAILURE;
    const int exit_status = make_thumbnail(&stream, (uint32_t)most, arguments + 1);
    free(stream.bytes);
    return exit_status;
}
