#ifndef EXAMPLES_SUPPORT_H
#define EXAMPLES_SUPPORT_H

/* What the examples share: whole files, and the description of a raw image on the command line.
 * A function that fails has said why on standard error; the name of the file is in the message. */

#include <stdbool.h>
#include <stddef.h>
#include <tesk/tesk.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Exit statuses. */
enum { SUCCESS = 0, FAILURE = 1, WRONG_USAGE = 2 };

typedef struct content {
    unsigned char* bytes; /* from malloc, never null after success */
    size_t size;
} content;

/* Reads a file into memory. Owns: the caller, who frees file->bytes. */
bool read_file(const char* name, content* file);

bool write_file(const char* name, const void* bytes, size_t size);

/* The words that read_geometry and read_image take, for messages about usage. */
#define GEOMETRY_USAGE "BYTES_PER_PIXEL BITS_PER_PIXEL WIDTH HEIGHT"
#define IMAGE_USAGE "RAW " GEOMETRY_USAGE

/* Reads the four arguments of GEOMETRY_USAGE. */
bool read_geometry(char** arguments, tesk_image* image);

/* Reads the raw image that five arguments in the order of IMAGE_USAGE describe. Bytes behind the
 * pixels are ignored. Owns: the caller, who frees pixels->bytes. */
bool read_image(char** arguments, tesk_image* image, content* pixels);

/* Returns: bytes of an image without gaps between its rows. */
size_t raw_bytes(const tesk_image* image);

/* Say what went wrong with what, usually a file. Return: FAILURE; false. */
int fail(const char* subject, const char* reason);
bool complain(const char* subject, const char* reason);

#ifdef __cplusplus
}
#endif

#endif
