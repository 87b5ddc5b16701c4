#include <gmock/gmock.h>
#include <thread>

#include "FilterRun.h"
#include "tesk.h"

namespace {

using hdf5::Bytes;
using hdf5::decode;
using hdf5::encode;
using hdf5::Outcome;
using testing::HasSubstr;

constexpr ChunkValues kGray8{1, 70, 50, 0, 0};
constexpr ChunkValues kGray16{2, 70, 50, 0, 0};
constexpr ChunkValues kColour{3, 70, 50, 0, 0};
constexpr ChunkValues kSigned8{1, 70, 50, 0, kSignedSamples};
constexpr ChunkValues kSigned16{2, 70, 50, 0, kSignedSamples};

class AnyChunk : public testing::TestWithParam<ChunkValues> {};

std::string nameOf(const testing::TestParamInfo<ChunkValues>& info) {
    const ChunkValues& chunk = info.param;
    return std::to_string(chunk.bytesPerPixel) + "bytes" + std::to_string(chunk.columns) + "x" +
           std::to_string(chunk.rows) + "bits" + std::to_string(chunk.bits) + "flags" +
           std::to_string(chunk.flags);
}

INSTANTIATE_TEST_SUITE_P(Types, AnyChunk,
                         testing::Values(kGray8, kGray16, kColour, kSigned8, kSigned16,
                                         ChunkValues{2, 70, 50, 9, kUnverifiedChunks},
                                         ChunkValues{2, 2, 2, 0, 0}, ChunkValues{1, 3, 1000, 0, 0}),
                         nameOf);

TEST_P(AnyChunk, ComesBack) {
    for (const bool noise : {false, true}) {
        const Bytes samples = hdf5::samplesOf(GetParam(), noise);
        const Outcome stream = encode(GetParam(), samples);
        ASSERT_NE(stream.returned, 0U) << hdf5::takeError();
        EXPECT_EQ(stream.bufferBytes, stream.returned);
        const Outcome back = decode(GetParam(), stream.bytes);
        ASSERT_EQ(back.returned, samples.size()) << hdf5::takeError();
        EXPECT_EQ(back.bufferBytes, samples.size());
        EXPECT_EQ(back.bytes, samples);
    }
}

TEST_P(AnyChunk, StreamsDeclareTheBitsThatAreGivenOrUsed) {
    const Outcome stream = encode(GetParam(), hdf5::samplesOf(GetParam()));
    tesk_image image = TESK_IMAGE_INIT;
    ASSERT_EQ(tesk_probe(stream.bytes.data(), stream.bytes.size(), &image), TESK_OK);
    EXPECT_GE(image.bits_per_pixel, GetParam().bits);
    EXPECT_LE(image.bits_per_pixel, mostBits(&GetParam()));
}

TEST_P(AnyChunk, EveryPrefixIsAnErrorOrLacksNothingButPadding) {
    const Bytes samples = hdf5::samplesOf(GetParam());
    const Bytes stream = encode(GetParam(), samples).bytes;
    for (std::size_t length = 0; length < stream.size(); ++length) {
        const Outcome back =
            decode(GetParam(), Bytes(stream.begin(), stream.begin() + static_cast<long>(length)));
        if (back.returned == 0) {
            EXPECT_TRUE(back.sameBlock);
            continue;
        }
        EXPECT_LE(stream.size() - length, 2U);
        EXPECT_EQ(back.bytes, samples);
    }
}

TEST(FilterCalls, ACutChunkIsNoApproximation) {
    Bytes stream = encode(kGray16, hdf5::samplesOf(kGray16)).bytes;
    stream.resize(stream.size() / 2);
    EXPECT_EQ(decode(kGray16, stream).returned, 0U);
    EXPECT_THAT(hdf5::takeError(), HasSubstr("ends before its stream does"));
}

TEST(FilterCalls, BytesBehindAStreamAreRefused) {
    Bytes stream = encode(kGray16, hdf5::samplesOf(kGray16)).bytes;
    stream.resize(stream.size() + 3);
    EXPECT_EQ(decode(kGray16, stream).returned, 0U);
    EXPECT_THAT(hdf5::takeError(), HasSubstr("3 bytes behind"));
}

TEST(FilterCalls, AChunkOfAnotherShapeOrTypeIsRefusedBeforeItIsDecoded) {
    const Bytes stream = encode(kGray16, hdf5::samplesOf(kGray16)).bytes;
    for (const ChunkValues& other : {ChunkValues{2, 50, 70, 0, 0}, ChunkValues{2, 70, 49, 0, 0},
                                     ChunkValues{1, 70, 100, 0, 0}, kGray8, kColour}) {
        EXPECT_EQ(decode(other, stream).returned, 0U);
        EXPECT_THAT(hdf5::takeError(), HasSubstr("holds 70 x 50 pixels of 2 bytes, and not"));
    }
}

TEST(FilterCalls, AChunkThatIsNoStreamIsRefused) {
    EXPECT_EQ(decode(kGray8, hdf5::samplesOf(kGray8)).returned, 0U);
    EXPECT_THAT(hdf5::takeError(), HasSubstr("damaged"));
}

TEST(FilterCalls, ValuesOfAnotherVersionAreRefusedBothWays) {
    hdf5::Values values = hdf5::valuesOf(kGray8);
    values[0] = 2;
    for (const unsigned flags : {0U, static_cast<unsigned>(H5Z_FLAG_REVERSE)}) {
        EXPECT_EQ(hdf5::run(flags, values, hdf5::samplesOf(kGray8)).returned, 0U);
        EXPECT_THAT(hdf5::takeError(), HasSubstr("values"));
        EXPECT_EQ(hdf5::run(flags, hdf5::valuesOf(kGray8), hdf5::samplesOf(kGray8), 0, 5).returned,
                  0U);
    }
}

// Later versions of HDF5 give buffers of the size of the samples.
TEST(FilterCalls, ABufferMayBeLongerThanItsBytes) {
    const Bytes samples = hdf5::samplesOf(kGray16);
    const Outcome stream = hdf5::run(0, hdf5::valuesOf(kGray16), samples, 1000);
    ASSERT_EQ(stream.bytes, encode(kGray16, samples).bytes);
    EXPECT_EQ(hdf5::run(H5Z_FLAG_REVERSE, hdf5::valuesOf(kGray16), stream.bytes, 9000).bytes,
              samples);
}

TEST(FilterCalls, AnotherNumberOfBytesIsNoChunk) {
    Bytes samples = hdf5::samplesOf(kGray16);
    for (const int change : {-1, 1}) {
        samples.resize(rawBytes(&kGray16) + static_cast<std::size_t>(change));
        EXPECT_EQ(encode(kGray16, samples).returned, 0U);
        EXPECT_THAT(hdf5::takeError(), HasSubstr("and not 7000"));
    }
}

// Then HDF5 stores the samples.
TEST(FilterCalls, OptionalFiltersLeaveAChunkThatDoesNotShrinkAsItIs) {
    for (const ChunkValues& chunk : {kGray16, kSigned8, kSigned16}) {
        const Bytes samples = hdf5::samplesOf(chunk, true);
        const Outcome outcome = encode(chunk, samples, H5Z_FLAG_OPTIONAL);
        EXPECT_THAT(hdf5::takeError(), HasSubstr("does not shrink"));
        EXPECT_EQ(outcome.returned, 0U);
        EXPECT_TRUE(outcome.sameBlock);
        EXPECT_EQ(outcome.bytes, samples);
        EXPECT_EQ(outcome.bufferBytes, samples.size());
        EXPECT_GT(encode(chunk, samples).returned, samples.size());
    }
}

TEST(FilterCalls, SamplesMayHaveMoreBitsThanTheUserSays) {
    for (const unsigned bits : {1U, 8U, 11U, 12U, 16U}) {
        const ChunkValues chunk{2, 70, 50, bits, 0};
        const Bytes samples = hdf5::samplesOf(chunk, true);
        EXPECT_EQ(decode(chunk, encode(chunk, samples).bytes).bytes, samples) << bits;
    }
}

// Their decoder holds more memory than that of others.
TEST(FilterCalls, WideChunksComeBack) {
    for (const ChunkValues& chunk :
         {ChunkValues{2, 20000, 400, 0, 0}, ChunkValues{3, 20000, 100, 0, 0}}) {
        const Bytes samples = hdf5::samplesOf(chunk, true);
        EXPECT_EQ(decode(chunk, encode(chunk, samples).bytes).bytes, samples) << hdf5::takeError();
    }
}

TEST(FilterCalls, SignedSamplesKeepTheirOrder) {
    const ChunkValues chunk{1, 2, 2, 0, kSignedSamples};
    const Bytes samples{0x80, 0xff, 0x00, 0x7f};  // -128, -1, 0, 127
    const Bytes stream = encode(chunk, samples).bytes;
    const ChunkValues raw{1, 2, 2, 0, 0};
    EXPECT_EQ(decode(raw, stream).bytes, (Bytes{0x00, 0x7f, 0x80, 0xff}));
}

TEST(FilterCalls, ThreadsDoNotTouchEachOther) {
    std::vector<std::thread> threads;
    std::vector<int> failures(4);
    for (std::size_t i = 0; i < failures.size(); ++i)
        threads.emplace_back([&, i] {
            const ChunkValues chunk{2, 70, static_cast<uint32_t>(40 + i), 0, 0};
            const Bytes samples = hdf5::samplesOf(chunk);
            for (int turn = 0; turn < 20; ++turn)
                failures[i] += decode(chunk, encode(chunk, samples).bytes).bytes != samples;
        });
    for (auto& thread : threads)
        thread.join();
    EXPECT_THAT(failures, testing::Each(0));
}

}  // namespace
