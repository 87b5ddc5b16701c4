#include "support.h"

#include <errno.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

int fail(const char* subject, const char* reason) {
    fprintf(stderr, "%s: %s\n", subject, reason);
    return FAILURE;
}

bool complain(const char* subject, const char* reason) {
    fail(subject, reason);
    return false;
}

static bool grow(content* file, size_t* room) {
    const size_t wanted = *room == 0 ? 65536 : *room * 2;
    unsigned char* bytes = realloc(file->bytes, wanted);
    if (bytes == NULL) return false;
    file->bytes = bytes;
    *room = wanted;
    return true;
}

/* Pipes have no size to ask for, so the buffer grows as the data comes. */
static const char* read_all(FILE* in, content* file) {
    size_t room = 0;
    for (;;) {
        if (file->size == room && !grow(file, &room)) return "does not fit into memory";
        const size_t got = fread(file->bytes + file->size, 1, room - file->size, in);
        file->size += got;
        if (ferror(in)) return strerror(errno);
        if (got == 0) return NULL;
    }
}

bool read_file(const char* name, content* file) {
    *file = (content){NULL, 0};
    FILE* in = fopen(name, "rb");
    if (in == NULL) return complain(name, strerror(errno));
    const char* problem = read_all(in, file);
    fclose(in);
    if (problem == NULL) return true;
    free(file->bytes);
    *file = (content){NULL, 0};
    return complain(name, problem);
}

bool write_file(const char* name, const void* bytes, size_t size) {
    FILE* out = fopen(name, "wb");
    if (out == NULL) return complain(name, strerror(errno));
    bool written = fwrite(bytes, 1, size, out) == size;
    /* A full disk may show only when the buffer is flushed. */
    written = fclose(out) == 0 && written;
    return written || complain(name, strerror(errno));
}

size_t raw_bytes(const tesk_image* image) {
    return (size_t)image->width * image->height * image->bytes_per_pixel;
}

static bool parse_number(const char* text, uint32_t* number) {
    char* end;
    errno = 0;
    const unsigned long value = strtoul(text, &end, 10);
    const bool is_number = text[0] >= '0' && text[0] <= '9' && *end == '\0';
    if (!is_number || errno != 0 || value > 65535)
        return complain(text, "not a number from 0 to 65535");
    *number = (uint32_t)value;
    return true;
}

bool read_geometry(char** arguments, tesk_image* image) {
    *image = (tesk_image)TESK_IMAGE_INIT;
    return parse_number(arguments[0], &image->bytes_per_pixel) &&
           parse_number(arguments[1], &image->bits_per_pixel) &&
           parse_number(arguments[2], &image->width) && parse_number(arguments[3], &image->height);
}

bool read_image(char** arguments, tesk_image* image, content* pixels) {
    if (!read_geometry(arguments + 1, image)) return false;
    if (!read_file(arguments[0], pixels)) return false;
    if (pixels->size >= raw_bytes(image)) return true;
    free(pixels->bytes);
    return complain(arguments[0], "shorter than an image of that size");
}
