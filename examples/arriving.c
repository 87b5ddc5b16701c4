/* Paints a picture while its stream arrives on the standard input: NAME-1.pgm or .ppm from the first bytes,
 * small, then larger ones, and the whole image in the end. A viewer would scale each to the same size. */

#include <stdio.h>
#include <stdlib.h>

#include "picture.h"

enum { FIRST_BYTES = 256 };

typedef struct arrival {
    tesk_codec* codec;
    content stream;
    const char* name;
    unsigned pictures;
} arrival;

/* Returns: the reduction whose picture has half a bit for each of its bytes, or the largest that there is.
 * More pixels would only be blurred ones. */
static uint32_t levels_for(const content* stream, bool is_all) {
    tesk_image image = TESK_IMAGE_INIT;
    tesk_image reduced = TESK_IMAGE_INIT;
    uint32_t levels = 0;
    if (is_all || tesk_probe(stream->bytes, stream->size, &image) != TESK_OK) return 0;
    reduced = image;
    while (raw_bytes(&reduced) > 16 * stream->size &&
           tesk_reduced_image(&image, levels + 1, &reduced) == TESK_OK)
        ++levels;
    return levels;
}

static int paint(arrival* a, bool is_all) {
    tesk_image picture = TESK_IMAGE_INIT;
    tesk_status status;
    const uint32_t levels = levels_for(&a->stream, is_all);
    unsigned char* pixels = reduced_pixels(a->codec, &a->stream, levels, &picture, &status);
    if (pixels == NULL) return fail("standard input", tesk_status_message(status));
    char file[4096];
    snprintf(file, sizeof file, "%s-%u.%s", a->name, ++a->pictures,
             picture.bytes_per_pixel == 3 ? "ppm" : "pgm");
    const bool written = write_picture(file, &picture, pixels, 1);
    free(pixels);
    if (!written) return FAILURE;
    printf("%10zu bytes  1 : %-2u  %u x %u  %s\n", a->stream.size, 1U << levels, picture.width,
           picture.height, status == TESK_OK ? "complete" : "more to come");
    fflush(stdout);
    return SUCCESS;
}

/* Paints whenever twice as much has arrived, and when no more comes. */
static int paint_all(arrival* a) {
    for (size_t room = FIRST_BYTES;; room *= 2) {
        unsigned char* bytes = realloc(a->stream.bytes, room);
        if (bytes == NULL) return fail("standard input", "does not fit into memory");
        a->stream.bytes = bytes;
        a->stream.size += fread(bytes + a->stream.size, 1, room - a->stream.size, stdin);
        const bool is_all = a->stream.size < room;
        const int exit_status = paint(a, is_all);
        if (exit_status != SUCCESS || is_all) return exit_status;
    }
}

int main(int count, char** arguments) {
    if (count != 2) {
        fputs("usage: arriving NAME <STREAM\n", stderr);
        return WRONG_USAGE;
    }
    arrival a = {NULL, {NULL, 0}, arguments[1], 0};
    tesk_options limits = TESK_OPTIONS_INIT;
    limits.max_pixels = (size_t)256 << 20;
    const tesk_status status = tesk_create(&limits, &a.codec);
    const int exit_status =
        status == TESK_OK ? paint_all(&a) : fail("codec", tesk_status_message(status));
    free(a.stream.bytes);
    tesk_destroy(a.codec);
    return exit_status;
}
