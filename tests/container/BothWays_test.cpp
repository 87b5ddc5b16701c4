// The two ways of decompression, through memory and through a small window on the file, give the same
// image and the same status for whole, cut and damaged streams.

#include <chrono>
#include <gtest/gtest.h>

#include "support/FileDrivers.h"

namespace {

using test::Bytes;
using test::Content;
using test::expectSameImage;
using test::imagesOf;
using test::kHeaderBytes;
using test::nameOf;
using test::prefixOf;
using test::RawImage;
using test::Size;

/// Flips one to three bits behind the header.
Bytes damaged(Bytes stream, test::Random& random) {
    for (std::uint64_t flips = 1 + random.below(3); flips > 0; --flips) {
        const std::uint64_t place = kHeaderBytes + random.below(stream.size() - kHeaderBytes);
        stream[place] ^= static_cast<unsigned char>(1U << random.below(8));
    }
    return stream;
}

TEST(BothWays, StreamsCutAtEveryByteDecodeTheSame) {
    for (const RawImage& image : imagesOf(Content::noise, {{8, 8}})) {
        const Bytes stream = test::encode(image);
        for (std::size_t size = kHeaderBytes; size <= stream.size(); ++size) {
            SCOPED_TRACE(nameOf(image) + " cut to " + std::to_string(size) + " bytes");
            const Bytes cut = prefixOf(stream, size);
            EXPECT_EQ(expectSameImage(cut), 0);
        }
    }
}

TEST(BothWays, DamagedStreamsDecodeTheSame) {
    constexpr int kStreamsOfEachImage = 100;
    test::Random random(20);
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}, {33, 18}})) {
        const Bytes stream = test::encode(image);
        for (int i = 0; i < kStreamsOfEachImage; ++i) {
            SCOPED_TRACE(nameOf(image) + ", stream " + std::to_string(i));
            const Bytes broken = damaged(stream, random);
            expectSameImage(broken);
        }
    }
}

TEST(BothWays, StreamsOfRandomBytesDecodeTheSameForAllSmallSides) {
    std::vector<Size> sizes;
    for (int sides = 0; sides < 36; ++sides)
        sizes.push_back({sides / 6, sides % 6});
    test::Random random(30);
    for (const RawImage& image : imagesOf(Content::flat, sizes))
        for (const std::size_t count : {0U, 1U, 9U, 100U}) {
            SCOPED_TRACE(nameOf(image) + ", bytes " + std::to_string(count));
            Bytes stream = test::encode(image, 0);
            while (stream.size() < kHeaderBytes + count)
                stream.push_back(static_cast<unsigned char>(random.below(256)));
            expectSameImage(stream);
        }
}

TEST(BothWays, EveryTopPlaneByteDecodesTheSame) {
    for (const RawImage& image : imagesOf(Content::noise, {{4, 4}})) {
        Bytes stream = test::encode(image);
        for (unsigned top = 0; top < 256; ++top) {
            SCOPED_TRACE(nameOf(image) + ", top plane byte " + std::to_string(top));
            stream[kHeaderBytes] = static_cast<unsigned char>(top);
            expectSameImage(stream);
        }
    }
}

TEST(BothWays, EveryBitDepthInAHeaderDecodesTheSame) {
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}})) {
        Bytes stream = prefixOf(test::encode(image), 100);
        for (unsigned bits = 0; bits < 256; ++bits) {
            SCOPED_TRACE(nameOf(image) + ", now " + std::to_string(bits) + " bits");
            stream[5] = static_cast<unsigned char>(bits);
            EXPECT_EQ(expectSameImage(stream), 0);
        }
    }
}

TEST(BothWays, EveryExtraNumberDecodesTheSame) {
    for (const RawImage& image : imagesOf(Content::photo, {{16, 16}})) {
        const Bytes stream = test::encode(image);
        for (const int extra : {-2147483647 - 1, -17, -16, -15, -5, -1, 1, 2, 20, 2147483647}) {
            SCOPED_TRACE(nameOf(image) + ", extra " + std::to_string(extra));
            EXPECT_EQ(expectSameImage(stream, extra), 0);
        }
    }
}

TEST(BothWays, HundredsOfThousandsOfEmptySectionsTakeLittleTime) {
    Bytes stream = test::encode(test::makeImage(Content::flat, 3, 8, 64, 64), 0);
    stream.resize(kHeaderBytes + 1'000'000, 0);
    stream[kHeaderBytes] = 7;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_EQ(expectSameImage(stream), 0);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
}

}  // namespace
