#ifndef TESK_CHUNK_VALUES_H
#define TESK_CHUNK_VALUES_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* The values that a file keeps with the filter, for all chunks of a dataset: version, bytes per pixel, columns, rows,
 * bits, flags. They are filled in when a dataset is created, and everything is checked again when they come out of a
 * file, which may be a stranger's. */

enum { kChunkValueCount = 6, kChunkVersion = 1 };

/* Flags of the values. */
enum {
    kSignedSamples = 1,   /* the sign bit of each sample is flipped on its way into a stream */
    kUnverifiedChunks = 2 /* streams are not decoded and compared when they are written */
};

/* A chunk as one picture. Its sides are from 2 to 65535, and it has less than 2^32 bytes, as all chunks. */
typedef struct ChunkValues {
    uint32_t bytesPerPixel; /* 1, 2: gray; 3: R, G, B */
    uint32_t columns;
    uint32_t rows;
    uint32_t bits; /* of a sample; 0: found for each chunk */
    uint32_t flags;
} ChunkValues;

/* Returns: the most bits of a sample, 8 or 16. */
uint32_t mostBits(const ChunkValues* chunk);

/* Returns: the bytes of a whole chunk. */
size_t rawBytes(const ChunkValues* chunk);

/* Returns: whether the values of a file are those of a chunk; then *chunk is filled. */
int readChunkValues(size_t count, const unsigned* values, ChunkValues* chunk);

/* Fills in kChunkValueCount values. */
void writeChunkValues(const ChunkValues* chunk, unsigned* values);

#ifdef __cplusplus
}
#endif

#endif
