#include "picture.h"

#include <errno.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

unsigned char* reduced_pixels(tesk_codec* codec, const content* stream, uint32_t levels,
                              tesk_image* picture, tesk_status* status) {
    *status = tesk_probe(stream->bytes, stream->size, picture);
    if (*status == TESK_OK) *status = tesk_reduced_image(picture, levels, picture);
    if (*status != TESK_OK) return NULL;
    unsigned char* pixels = malloc(raw_bytes(picture) + 1);
    if (pixels == NULL) *status = TESK_OUT_OF_MEMORY;
    if (pixels == NULL) return NULL;
    *status = tesk_decompress_reduced(codec, stream->bytes, stream->size, levels, pixels,
                                      raw_bytes(picture), 0, NULL);
    if (*status == TESK_OK || *status == TESK_CUT) return pixels;
    free(pixels);
    return NULL;
}

/* The largest sample; a header may say anything. */
static unsigned largest(const tesk_image* picture) {
    const unsigned most = picture->bytes_per_pixel == 2 ? 16 : 8;
    const unsigned bits = picture->bits_per_pixel;
    return (1U << (bits == 0 || bits > most ? most : bits)) - 1;
}

static void put_pixel(const unsigned char* pixel, const tesk_image* picture, FILE* out) {
    const unsigned limit = largest(picture);
    if (picture->bytes_per_pixel == 2) {
        uint16_t sample;
        memcpy(&sample, pixel, sizeof sample);
        const unsigned shown = sample < limit ? sample : limit;
        fputc((int)(shown >> 8), out);
        fputc((int)(shown & 255), out);
        return;
    }
    for (uint32_t i = 0; i < picture->bytes_per_pixel; ++i)
        fputc((int)(pixel[i] < limit ? pixel[i] : limit), out);
}

static void put_picture(const tesk_image* picture, const unsigned char* pixels, uint32_t step,
                        FILE* out) {
    fprintf(out, "%s\n%u %u\n%u\n", picture->bytes_per_pixel == 3 ? "P6" : "P5",
            (picture->width + step - 1) / step, (picture->height + step - 1) / step,
            largest(picture));
    for (uint32_t y = 0; y < picture->height; y += step)
        for (uint32_t x = 0; x < picture->width; x += step)
            put_pixel(pixels + ((size_t)y * picture->width + x) * picture->bytes_per_pixel, picture,
                      out);
}

bool write_picture(const char* name, const tesk_image* picture, const unsigned char* pixels,
                   uint32_t step) {
    FILE* out = fopen(name, "wb");
    if (out == NULL) return complain(name, strerror(errno));
    put_picture(picture, pixels, step, out);
    bool written = ferror(out) == 0;
    /* A full disk may show only when the buffer is flushed. */
    written = fclose(out) == 0 && written;
    return written || complain(name, strerror(errno));
}
