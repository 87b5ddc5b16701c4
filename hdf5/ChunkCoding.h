#ifndef TESK_CHUNK_CODING_H
#define TESK_CHUNK_CODING_H

#include "ChunkValues.h"

/* Both ways take the memory of HDF5, `*bytes`, and put another block of it in its place when they succeed. When they fail
 * they leave it as it is, and HDF5's stack of errors says why. */

/* Replaces the samples of a chunk, byteCount bytes, by a stream. With mayNotGrow a stream that is not shorter than the
 * samples is a failure.
 * Returns: the bytes of the stream; 0: failed. */
size_t encodeChunk(const ChunkValues* chunk, int mayNotGrow, void** bytes, size_t byteCount);

/* Replaces a stream, byteCount bytes and nothing behind, by the samples of a chunk.
 * Returns: the bytes of the samples; 0: failed. */
size_t decodeChunk(const ChunkValues* chunk, void** bytes, size_t byteCount);

#endif
