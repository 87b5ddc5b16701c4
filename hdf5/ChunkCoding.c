#include "ChunkCoding.h"

#include <hdf5.h>

#include "FilterError.h"
#include "tesk.h"

/* The buffer of a filter is HDF5's, and so is what it is replaced by: a build of HDF5 may look for marks of its own
 * around its blocks. A stream is not copied into such a block, but made in one. */
static void* allocate(void* user, size_t bytes) {
    (void)user;
    return H5allocate_memory(bytes, 0);
}

static void release(void* user, void* memory) {
    (void)user;
    H5free_memory(memory);
}

/* No state is kept between chunks, so that any threads may work. Returns: null when there is no memory. */
static tesk_codec* makeCodec(uint32_t flags, size_t mostPixels, size_t mostMemory) {
    tesk_codec* codec;
    tesk_options options = TESK_OPTIONS_INIT;
    options.max_pixels = mostPixels;
    options.max_memory_bytes = mostMemory;
    options.allocate = allocate;
    options.release = release;
    options.flags = flags;
    return tesk_create(&options, &codec) == TESK_OK ? codec : NULL;
}

static tesk_image imageOf(const ChunkValues* chunk) {
    tesk_image image = TESK_IMAGE_INIT;
    image.width = chunk->columns;
    image.height = chunk->rows;
    image.bytes_per_pixel = chunk->bytesPerPixel;
    image.bits_per_pixel = chunk->bits;
    return image;
}

/* Signed samples become unsigned ones in the same order, and back. */
static void flipSigns(const ChunkValues* chunk, void* samples) {
    const size_t count = (size_t)chunk->columns * chunk->rows;
    if ((chunk->flags & kSignedSamples) == 0) return;
    if (chunk->bytesPerPixel == 1) {
        uint8_t* bytes = samples;
        for (size_t i = 0; i < count; ++i)
            bytes[i] ^= 0x80;
    } else {
        uint16_t* words = samples;
        for (size_t i = 0; i < count; ++i)
            words[i] ^= 0x8000;
    }
}

/* Returns: the length of the longest sample, at least 1. */
static uint32_t findBits(const tesk_image* image, const void* samples) {
    uint32_t used = 0, bits = 1;
    tesk_used_bits(image, samples, 0, &used);
    while (used >> bits != 0)
        ++bits;
    return bits;
}

static tesk_status makeStream(const ChunkValues* chunk, const void* samples, void** stream,
                              size_t* streamBytes) {
    tesk_image image = imageOf(chunk);
    tesk_result result = TESK_RESULT_INIT;
    tesk_codec* codec =
        makeCodec((chunk->flags & kUnverifiedChunks) != 0 ? TESK_UNVERIFIED : 0, 0, 0);
    if (codec == NULL) return TESK_OUT_OF_MEMORY;
    if (image.bits_per_pixel == 0) image.bits_per_pixel = findBits(&image, samples);
    const tesk_status status =
        tesk_compress_to_block(codec, &image, samples, 0, 0, stream, &result);
    tesk_destroy(codec);
    *streamBytes = result.stream_bytes;
    return status;
}

size_t encodeChunk(const ChunkValues* chunk, int mayNotGrow, void** bytes, size_t byteCount) {
    void* stream = NULL;
    size_t streamBytes = 0;
    if (byteCount != rawBytes(chunk)) {
        pushError(H5E_CANTFILTER, "a chunk has %zu bytes and not %zu", byteCount, rawBytes(chunk));
        return 0;
    }
    flipSigns(chunk, *bytes);
    const tesk_status status = makeStream(chunk, *bytes, &stream, &streamBytes);
    if (status == TESK_OK && !(mayNotGrow && streamBytes >= byteCount)) {
        H5free_memory(*bytes);
        *bytes = stream;
        return streamBytes;
    }
    if (stream != NULL) H5free_memory(stream);
    flipSigns(chunk, *bytes); /* where the filter is optional, HDF5 stores the samples now */
    if (status == TESK_OK)
        pushError(H5E_CANTFILTER, "a chunk of %zu bytes does not shrink: its stream has %zu",
                  byteCount, streamBytes);
    else
        pushError(H5E_CANTFILTER, "a chunk is not compressed: %s",
                  tesk_status_message((int)status));
    return 0;
}

/* Looks at the header of a stream and at the lengths of its sections. Nothing is allocated yet. */
static int checkStream(const ChunkValues* chunk, const void* stream, size_t byteCount) {
    tesk_image image = TESK_IMAGE_INIT;
    size_t length = 0;
    tesk_status status = tesk_probe(stream, byteCount, &image);
    if (status == TESK_OK && (image.width != chunk->columns || image.height != chunk->rows ||
                              image.bytes_per_pixel != chunk->bytesPerPixel)) {
        pushError(H5E_CANTFILTER, "a chunk holds %u x %u pixels of %u bytes, and not %u x %u of %u",
                  (unsigned)image.width, (unsigned)image.height, (unsigned)image.bytes_per_pixel,
                  (unsigned)chunk->columns, (unsigned)chunk->rows, (unsigned)chunk->bytesPerPixel);
        return -1;
    }
    if (status == TESK_OK) status = tesk_measure(stream, byteCount, &length);
    if (status == TESK_OK && length == byteCount) return 0;
    if (status == TESK_CUT)
        pushError(H5E_CANTFILTER, "a chunk of %zu bytes ends before its stream does", byteCount);
    else if (status == TESK_OK)
        pushError(H5E_CANTFILTER, "a chunk has %zu bytes behind its stream", byteCount - length);
    else
        pushError(H5E_CANTFILTER, "a chunk is damaged: %s", tesk_status_message((int)status));
    return -1;
}

/* Returns: more than decompression takes by docs/limits.md. */
static size_t mostDecodingMemory(const ChunkValues* chunk) {
    const size_t planes = chunk->bytesPerPixel == 3 ? 3 : 1;
    return ((size_t)1 << 20) + 640 * planes * (chunk->columns + 8);
}

static tesk_status makeSamples(const ChunkValues* chunk, const void* stream, size_t byteCount,
                               void* samples) {
    tesk_codec* codec =
        makeCodec(0, (size_t)chunk->columns * chunk->rows, mostDecodingMemory(chunk));
    if (codec == NULL) return TESK_OUT_OF_MEMORY;
    const tesk_status status =
        tesk_decompress(codec, stream, byteCount, samples, rawBytes(chunk), 0, NULL);
    tesk_destroy(codec);
    return status;
}

size_t decodeChunk(const ChunkValues* chunk, void** bytes, size_t byteCount) {
    if (checkStream(chunk, *bytes, byteCount) < 0) return 0;
    void* samples = H5allocate_memory(rawBytes(chunk), 0);
    const tesk_status status =
        samples == NULL ? TESK_OUT_OF_MEMORY : makeSamples(chunk, *bytes, byteCount, samples);
    /* An approximation is no success. */
    if (status != TESK_OK) {
        if (samples != NULL) H5free_memory(samples);
        pushError(H5E_CANTFILTER, "a chunk is not decompressed: %s",
                  tesk_status_message((int)status));
        return 0;
    }
    flipSigns(chunk, samples);
    H5free_memory(*bytes);
    *bytes = samples;
    return rawBytes(chunk);
}
