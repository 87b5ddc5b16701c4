#include "api/CTeskDecompressor.h"

#include <gtest/gtest.h>

#include "support/CodecObjects.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::decompressObject;
using test::expectSameOutcome;
using test::prefixOf;
using test::RawImage;

TEST(CTeskDecompressor, CompleteStreamsDecodeAsInTheLibrary) {
    for (const test::SampleKind kind : test::kKindsOfBothProfiles)
        for (int width = 0; width <= 20; ++width)
            for (int height = 0; height <= 20; ++height) {
                const RawImage image = test::makeImage(Content::photo, kind.bytesPerPixel,
                                                       kind.bitsPerPixel, width, height);
                SCOPED_TRACE(testing::Message() << width << " x " << height);
                const Bytes stream = test::encode(image);
                expectSameOutcome(test::decode(stream), decompressObject(stream));
            }
}

TEST(CTeskDecompressor, EveryPrefixDecodesAsInTheLibrary) {
    int restored = 0;
    for (const test::SampleKind kind : test::kKindsOfBothProfiles) {
        const RawImage image =
            test::makeImage(Content::noise, kind.bytesPerPixel, kind.bitsPerPixel, 16, 16);
        const Bytes stream = test::encode(image);
        for (std::size_t size = 17; size <= stream.size(); ++size) {
            SCOPED_TRACE(size);
            const Bytes prefix = prefixOf(stream, size);
            const test::Outcome decoded = decompressObject(prefix);
            expectSameOutcome(test::decode(prefix), decoded);
            ASSERT_TRUE(decoded.status == kCut || size > stream.size() / 2);
        }
        if (decompressObject(stream).bytes == image.bytes) ++restored;
    }
    EXPECT_GE(restored, 5);
}

TEST(CTeskDecompressor, NoiseDecodesAsInTheLibrary) {
    int counts[3] = {};
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const test::SampleKind kind = test::kKindsOfBothProfiles[seed % 7];
        const Bytes stream =
            test::noiseStream(makeHeader(kind.bytesPerPixel, kind.bitsPerPixel, 40, 30), 60, seed);
        const test::Outcome decoded = decompressObject(stream);
        expectSameOutcome(test::decode(stream), decoded);
        ++counts[decoded.status == kComplete ? 0 : decoded.status == kCut ? 1 : 2];
    }
    EXPECT_GT(counts[0], 0);
    EXPECT_GT(counts[1], 0);
    EXPECT_GT(counts[2], 0);
}

TEST(CTeskDecompressor, StreamsWithoutABitBehindTheHeaderAreInvalid) {
    const Bytes stream = test::encode(test::makeImage(Content::photo, 1, 8, 8, 8));
    for (std::size_t size = 0; size <= 16; ++size) {
        const Bytes prefix = prefixOf(stream, size);
        CTeskDecompressor decompressor(size == 0 ? nullptr : prefix.data(), size);
        EXPECT_EQ(decompressor.getBytesPerPixel(), 0);
        EXPECT_EQ(decompressor.getBitsPerPixel(), 0);
        EXPECT_EQ(decompressor.getXSize(), 0);
        EXPECT_EQ(decompressor.getYSize(), 0);
        Bytes out(64, 0xA5);
        decompressor.stop();
        decompressor.kill();
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(decompressor.decompress(out.data(), out.size()), kInvalidSection);
        EXPECT_EQ(out, Bytes(64, 0xA5));
    }
}

TEST(CTeskDecompressor, TellsTheGeometryThatTheHeaderNames) {
    const Bytes stream = test::headed(makeHeader(2, 200, 300, 2), {0xFF});
    CTeskDecompressor decompressor(stream.data(), stream.size());
    EXPECT_EQ(decompressor.getBytesPerPixel(), 2);
    EXPECT_EQ(decompressor.getBitsPerPixel(), 200);
    EXPECT_EQ(decompressor.getXSize(), 300);
    EXPECT_EQ(decompressor.getYSize(), 2);
}

TEST(CTeskDecompressor, UnsupportedFormatsAreInvalidButTellTheirGeometry) {
    for (const int bytes : {0, 4, 5, 255}) {
        const Bytes stream = test::headed(makeHeader(bytes, 8, 65535, 65535), Bytes(20, 0));
        CTeskDecompressor decompressor(stream.data(), stream.size());
        EXPECT_EQ(decompressor.getBytesPerPixel(), bytes);
        EXPECT_EQ(decompressor.getXSize(), 65535);
        EXPECT_EQ(decompressor.getYSize(), 65535);
        decompressor.stop();
        decompressor.kill();
        unsigned char out = 0xA5;
        for (int i = 0; i < 2; ++i)
            EXPECT_EQ(decompressor.decompress(&out, 1), kInvalidSection);
        EXPECT_EQ(out, 0xA5);
    }
}

TEST(CTeskDecompressor, TheMagicIsNotLookedAt) {
    const RawImage image = test::makeImage(Content::photo, 3, 8, 12, 14);
    Bytes stream = test::encode(image);
    for (int i = 0; i < 4; ++i) {
        stream[static_cast<std::size_t>(i)] = 0xEE;
        test::expectOutcome(kComplete, image.bytes, decompressObject(stream));
    }
}

TEST(CTeskDecompressor, ReservedBytesOfTheHeaderAreIgnored) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 12, 14);
    Bytes stream = test::encode(image);
    std::fill(stream.begin() + 10, stream.begin() + 16, static_cast<unsigned char>(0xFF));
    test::expectOutcome(kComplete, image.bytes, decompressObject(stream));
}

TEST(CTeskDecompressor, AFirstByteBehindTheHeaderIsACutStream) {
    for (const test::SampleKind kind : test::kKindsOfBothProfiles) {
        const RawImage image =
            test::makeImage(Content::noise, kind.bytesPerPixel, kind.bitsPerPixel, 9, 9);
        const Bytes zeros(image.bytes.size(), 0);
        test::expectOutcome(kCut, zeros, decompressObject(prefixOf(test::encode(image), 17)));
    }
}

/// Returns: the samples of 2 bytes, least byte first.
std::vector<unsigned> samples16(const Bytes& bytes) {
    std::vector<unsigned> samples;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
        samples.push_back(bytes[i] | unsigned{bytes[i + 1]} << 8);
    return samples;
}

TEST(CTeskDecompressor, OnlyCutStreamsAreLimitedToTheBitsOfTheHeader) {
    const RawImage image = test::makeImage(Content::noise, 2, 16, 24, 24);
    Bytes stream = test::encode(image);
    for (const int bits : {13, 15}) {
        const unsigned greatest = (1U << bits) - 1;
        stream[5] = static_cast<unsigned char>(bits);
        test::expectOutcome(kComplete, image.bytes, decompressObject(stream));
        const test::Outcome cut = decompressObject(prefixOf(stream, stream.size() - 40));
        EXPECT_EQ(cut.status, kCut);
        const std::vector<unsigned> samples = samples16(cut.bytes);
        EXPECT_EQ(*std::max_element(samples.begin(), samples.end()), greatest);
        EXPECT_GT(std::count(samples.begin(), samples.end(), greatest), 50);
    }
}

TEST(CTeskDecompressor, WidthOfCoefficientsFollowsTheMemoryProfile) {
    // A coefficient of 40000 fits into 32 bits and wraps in 16.
    const Bytes body = test::StreamBuilder(1, 1, 15).n(0, "0 1").end();
    const auto sampleFor = [&](int bits) {
        const test::Outcome decoded =
            decompressObject(test::headed(makeHeader(2, bits, 1, 1), body));
        return std::make_pair(decoded.status, decoded.bytes);
    };
    EXPECT_EQ(sampleFor(11), sampleFor(8));
    EXPECT_EQ(sampleFor(12), sampleFor(16));
}

}  // namespace
