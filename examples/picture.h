#ifndef EXAMPLES_PICTURE_H
#define EXAMPLES_PICTURE_H

/* Pictures that every viewer opens: PGM for gray, PPM for colours. */

#include "support.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Returns: the pixels of a stream at 1 : 2^levels, or null when there are none, with *status saying why. Fills
 * picture. Owns: the caller, who frees it. */
unsigned char* reduced_pixels(tesk_codec* codec, const content* stream, uint32_t levels,
                              tesk_image* picture, tesk_status* status);

/* Writes every step-th pixel of every step-th row. Returns: whether that worked; if not it has said why. */
bool write_picture(const char* name, const tesk_image* picture, const unsigned char* pixels,
                   uint32_t step);

#ifdef __cplusplus
}
#endif

#endif
