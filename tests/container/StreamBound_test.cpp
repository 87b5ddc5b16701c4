#include "container/StreamBound.h"

#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/LibraryCodec.h"

namespace {

using test::Bytes;
using test::RawImage;

/// Contents that make long streams, or need a rescue. Samples use all their bits, whatever is declared.
enum class Worst { noise, extremes, checkerboard, flat, nearlyFlat, specks };
constexpr Worst kWorst[] = {Worst::noise, Worst::extremes,   Worst::checkerboard,
                            Worst::flat,  Worst::nearlyFlat, Worst::specks};

unsigned sampleOf(Worst content, int r, int c, unsigned most, test::Random& random) {
    switch (content) {
        case Worst::noise:
            return static_cast<unsigned>(random.below(most + 1));
        case Worst::extremes:
            return random.below(2) == 0 ? 0 : most;
        case Worst::checkerboard:
            return (r + c) % 2 == 0 ? 0 : most;
        case Worst::flat:
            return most;
        case Worst::nearlyFlat:
            return most - static_cast<unsigned>(random.below(3));
        case Worst::specks:
            return random.below(4) == 0 ? static_cast<unsigned>(random.below(2)) * most : most / 2;
    }
    return 0;
}

RawImage makeWorst(Worst content, test::SampleKind kind, test::Size size) {
    RawImage image{kind.bytesPerPixel, kind.bitsPerPixel, size.width, size.height, {}};
    test::Random random(static_cast<std::uint64_t>(size.width * 1000 + size.height + 1));
    const unsigned most = kind.bytesPerPixel == 2 ? 0xFFFF : 0xFF;
    const int planes = kind.bytesPerPixel == 3 ? 3 : 1;
    for (int r = 0; r < size.height; ++r)
        for (int i = 0; i < size.width * planes; ++i) {
            // Neighbouring colours at opposite ends differ most.
            const unsigned sample = sampleOf(content, r, i / planes + i % planes, most, random);
            image.bytes.push_back(static_cast<unsigned char>(sample));
            if (most > 0xFF) image.bytes.push_back(static_cast<unsigned char>(sample >> 8));
        }
    return image;
}

/// One image after the other, plain and exact.
class StreamBound : public testing::Test {
protected:
    void expectBounded(const RawImage& image) {
        const std::uint64_t bound = qmx::streamBoundBytes(test::headerOf(image));
        for (tesk_codec* codec : {plain.get(), exact.get()}) {
            const test::Call call = test::compressCall(codec, image);
            if (call.status == TESK_NOT_RESTORABLE) continue;
            EXPECT_EQ(call.status, TESK_OK);
            EXPECT_LE(call.result.stream_bytes, bound) << test::nameOf(image);
            rescues |= call.result.rescue;
            mostOfBound = std::max(mostOfBound, static_cast<double>(call.result.stream_bytes) /
                                                    static_cast<double>(bound));
        }
    }

    test::Codec plain = test::makeCodecWithFlags(TESK_PLAIN);
    test::Codec exact = test::makeCodecWithFlags(TESK_UNVERIFIED);
    std::uint32_t rescues = 0;
    double mostOfBound = 0;
};

constexpr test::SampleKind kKinds[] = {{1, 8}, {3, 1}, {2, 1}, {2, 11}, {2, 12}, {2, 16}};

TEST_F(StreamBound, HoldsForAllSmallSizes) {
    std::size_t turn = 0;
    for (int height = 0; height <= 40; ++height)
        for (int width = 0; width <= 40; ++width)
            for (const test::SampleKind kind : kKinds) {
                ++turn;
                // Every content meets every kind and all kinds of sizes.
                const Worst content = kWorst[(turn + turn / std::size(kKinds)) % std::size(kWorst)];
                expectBounded(makeWorst(content, kind, {width, height}));
            }
    constexpr std::uint32_t kRescues = TESK_RESCUE_THIN_FILTER | TESK_RESCUE_DECLARED_BITS |
                                       TESK_RESCUE_OTHER_REPRESENTATIVE | TESK_RESCUE_WHOLE_WRAPS;
    EXPECT_EQ(rescues & kRescues, kRescues);
}

TEST_F(StreamBound, HoldsForThinImages) {
    for (const int shorter : {1, 2, 3})
        for (const int longer : {41, 255, 257, 1025})
            for (const test::SampleKind kind : kKinds)
                for (const Worst content : kWorst) {
                    expectBounded(makeWorst(content, kind, {shorter, longer}));
                    expectBounded(makeWorst(content, kind, {longer, shorter}));
                }
}

/// 261 x 1026 has a column that a level does not filter; flat, 362 x 360 is rescued.
TEST_F(StreamBound, HoldsForLargeImagesAndIsNotFarAway) {
    for (const test::Size size : {test::Size{261, 1026}, {362, 360}, {256, 256}})
        for (const test::SampleKind kind : kKinds) {
            mostOfBound = 0;
            for (const Worst content : kWorst)
                expectBounded(makeWorst(content, kind, size));
            EXPECT_GT(mostOfBound, 0.65) << kind.bytesPerPixel << ' ' << kind.bitsPerPixel;
        }
    EXPECT_NE(rescues & TESK_RESCUE_WHOLE_WRAPS, 0U);
    EXPECT_NE(rescues & TESK_RESCUE_OTHER_REPRESENTATIVE, 0U);
}

TEST_F(StreamBound, OfAnImageWithoutCoefficientsIsItsStream) {
    for (const test::Size size : {test::Size{0, 0}, {0, 7}, {7, 0}, {1, 1}, {1, 65535}, {65535, 1}})
        for (const test::SampleKind kind : kKinds)
            EXPECT_EQ(qmx::streamBoundBytes(qmx::makeHeader(kind.bytesPerPixel, kind.bitsPerPixel,
                                                            size.width, size.height)),
                      19U);
}

TEST_F(StreamBound, OfTheLargestImagesIsBelowTwiceTheirRawSize) {
    for (const test::SampleKind kind : kKinds) {
        const qmx::TKHeader header =
            qmx::makeHeader(kind.bytesPerPixel, kind.bitsPerPixel, 65535, 65535);
        EXPECT_GT(qmx::streamBoundBytes(header), header.rawBytes());
        EXPECT_LT(qmx::streamBoundBytes(header), 2 * header.rawBytes());
    }
}

}  // namespace
