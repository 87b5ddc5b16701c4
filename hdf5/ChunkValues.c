#include "ChunkValues.h"

uint32_t mostBits(const ChunkValues* chunk) {
    return chunk->bytesPerPixel == 2 ? 16 : 8;
}

size_t rawBytes(const ChunkValues* chunk) {
    return (size_t)chunk->bytesPerPixel * chunk->columns * chunk->rows;
}

static int isSide(uint32_t pixels) {
    return pixels >= 2 && pixels <= 65535;
}

static int isChunk(const ChunkValues* chunk) {
    const uint32_t knownFlags = kSignedSamples | kUnverifiedChunks;
    return chunk->bytesPerPixel >= 1 && chunk->bytesPerPixel <= 3 && isSide(chunk->columns) &&
           isSide(chunk->rows) && rawBytes(chunk) <= UINT32_MAX && chunk->bits <= mostBits(chunk) &&
           (chunk->flags & ~knownFlags) == 0 &&
           (chunk->bytesPerPixel != 3 || (chunk->flags & kSignedSamples) == 0);
}

int readChunkValues(size_t count, const unsigned* values, ChunkValues* chunk) {
    if (count != kChunkValueCount || values[0] != kChunkVersion) return 0;
    chunk->bytesPerPixel = values[1];
    chunk->columns = values[2];
    chunk->rows = values[3];
    chunk->bits = values[4];
    chunk->flags = values[5];
    return isChunk(chunk);
}

void writeChunkValues(const ChunkValues* chunk, unsigned* values) {
    values[0] = kChunkVersion;
    values[1] = chunk->bytesPerPixel;
    values[2] = chunk->columns;
    values[3] = chunk->rows;
    values[4] = chunk->bits;
    values[5] = chunk->flags;
}
