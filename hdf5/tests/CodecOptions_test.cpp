#include <gtest/gtest.h>

#include "FilterRun.h"
#include "tesk.h"

// What the filter asks of the codec. The linker leads its calls of tesk_create here (--wrap).

namespace {

tesk_options given;
bool hasMemory = true;

}  // namespace

extern "C" {
tesk_status __real_tesk_create(const tesk_options* options, tesk_codec** codec);

tesk_status __wrap_tesk_create(const tesk_options* options, tesk_codec** codec) {
    given = *options;
    *codec = nullptr;
    return hasMemory ? __real_tesk_create(options, codec) : TESK_OUT_OF_MEMORY;
}
}

namespace {

constexpr ChunkValues kChunk{2, 70, 50, 0, kSignedSamples};
constexpr ChunkValues kUnverified{2, 70, 50, 0, kSignedSamples | kUnverifiedChunks};

TEST(CodecOptions, ChunksAreComparedUnlessTheUserSaysOtherwise) {
    const hdf5::Bytes samples = hdf5::samplesOf(kChunk);
    const hdf5::Bytes stream = hdf5::encode(kChunk, samples).bytes;
    EXPECT_EQ(given.flags, 0U);
    EXPECT_EQ(hdf5::encode(kUnverified, samples).bytes, stream);
    EXPECT_EQ(given.flags, uint32_t{TESK_UNVERIFIED});
}

TEST(CodecOptions, WhatDecodingMayHoldFollowsFromTheChunk) {
    const hdf5::Bytes stream = hdf5::encode(kChunk, hdf5::samplesOf(kChunk)).bytes;
    hdf5::decode(kChunk, stream);
    EXPECT_EQ(given.max_pixels, 3500U);
    EXPECT_GT(given.max_memory_bytes, 0U);
    EXPECT_LT(given.max_memory_bytes, 1200000U);
}

TEST(CodecOptions, WithoutMemoryACallFailsAndChangesNothing) {
    const hdf5::Bytes samples = hdf5::samplesOf(kChunk);
    const hdf5::Bytes stream = hdf5::encode(kChunk, samples).bytes;
    hasMemory = false;
    const hdf5::Outcome encoded = hdf5::encode(kChunk, samples);
    EXPECT_EQ(hdf5::takeError(), "a chunk is not compressed: out of memory");
    const hdf5::Outcome decoded = hdf5::decode(kChunk, stream);
    EXPECT_EQ(hdf5::takeError(), "a chunk is not decompressed: out of memory");
    hasMemory = true;
    EXPECT_EQ(encoded.returned + decoded.returned, 0U);
    EXPECT_TRUE(encoded.sameBlock && decoded.sameBlock);
    EXPECT_EQ(encoded.bytes, samples);
    EXPECT_EQ(decoded.bytes, stream);
}

}  // namespace
