// Calls of the C interface between pages that may not be touched: their arguments, and all memory that they take.

#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CpuLevels.h"
#include "support/GuardedHeap.h"
#include "support/KernelData.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;
using test::sameBytes;
using test::Side;

using Guarded = test::GuardedBuffer<unsigned char>;

constexpr unsigned char kGap = 0x3C;

struct Kind {
    int bytesPerPixel;
    int bitsPerPixel;
};
constexpr Kind kKinds[] = {{1, 8}, {3, 8}, {2, 10}, {2, 12}, {2, 16}};

RawImage imageOf(Kind kind, Content content, int width, int height) {
    return test::makeImage(content, kind.bytesPerPixel, kind.bitsPerPixel, width, height);
}

/// Returns: the stream that the plain kernels make of an image, and decodes streams, with other memory.
class PlainCodec {
public:
    Bytes compress(const RawImage& image) {
        const qmx::CCpuLevelGuard guard(qmx::CpuLevel::scalar);
        return test::compressCall(codec.get(), image).bytes;
    }
    Call decompress(const Bytes& stream, std::uint32_t levels) {
        const qmx::CCpuLevelGuard guard(qmx::CpuLevel::scalar);
        return test::reduceCall(codec.get(), stream, levels);
    }

private:
    test::Codec codec = test::makeCodec();
};

class GuardedCalls : public test::AtCpuLevel {
protected:
    /// Rows stand gapBytes apart.
    void expectRoundTrip(const RawImage& image, std::size_t gapBytes, Side side) {
        const tesk_options options = heaps[static_cast<int>(side)].options();
        const test::Codec codec = test::makeCodec(&options);
        const tesk_image geometry = geometryOf(image);
        const std::size_t strideBytes = rowBytesOf(image) + gapBytes;
        const Guarded pixels(spread(image, strideBytes, kGap), side);
        const Bytes expected = plain.compress(image);
        const Guarded stream(Bytes(expected.size()), side);
        ASSERT_EQ(tesk_compress(codec.get(), &geometry, pixels.data(), strideBytes, 0,
                                stream.data(), expected.size(), nullptr),
                  TESK_OK);
        ASSERT_TRUE(sameBytes(expected, stream.samples()));

        const Bytes rows = pixels.samples();
        const Guarded out(Bytes(rows.size(), kGap), side);
        ASSERT_EQ(tesk_decompress(codec.get(), stream.data(), expected.size(), out.data(),
                                  rows.size(), strideBytes, nullptr),
                  TESK_OK);
        ASSERT_TRUE(sameBytes(rows, out.samples()));
    }

    /// At 1 : 2^levels.
    void expectDecoding(const Bytes& bytes, Side side, std::uint32_t levels = 0) {
        const tesk_options options = heaps[static_cast<int>(side)].options();
        const test::Codec codec = test::makeCodec(&options);
        const Call expected = plain.decompress(bytes, levels);
        const Guarded stream(bytes, side);
        const Guarded out(Bytes(expected.bytes.size()), side);
        ASSERT_EQ(tesk_decompress_reduced(codec.get(), stream.data(), bytes.size(), levels,
                                          out.data(), expected.bytes.size(), 0, nullptr),
                  expected.status);
        ASSERT_TRUE(sameBytes(expected.bytes, out.samples()));
    }

    PlainCodec plain;
    test::GuardedHeap heaps[2] = {test::GuardedHeap(Side::atEnd), test::GuardedHeap(Side::atStart)};
};

TEST_P(GuardedCalls, ImagesOfAllWidthsComeBack) {
    for (std::size_t width = 4; width <= test::kLongestRow; ++width)
        for (const Side side : test::kBothSides) {
            const Kind kind = kKinds[width % std::size(kKinds)];
            const Content content = width % 2 == 0 ? Content::photo : Content::noise;
            SCOPED_TRACE(testing::Message() << width << ", " << nameOf(side));
            const auto height = static_cast<int>(4 + width % 9);
            const RawImage image = imageOf(kind, content, static_cast<int>(width), height);
            expectRoundTrip(image, width % 3, side);
            if (HasFatalFailure()) return;
        }
}

TEST_P(GuardedCalls, ImagesOfAllKindsAndContentsComeBack) {
    for (const Kind kind : kKinds)
        for (const Content content :
             {Content::flat, Content::gradient, Content::noise, Content::photo, Content::sparse})
            for (const Side side : test::kBothSides) {
                SCOPED_TRACE(testing::Message() << kind.bytesPerPixel << " bytes, "
                                                << nameOf(content) << ", " << nameOf(side));
                expectRoundTrip(imageOf(kind, content, 130, 70), 0, side);
                if (HasFatalFailure()) return;
            }
}

TEST_P(GuardedCalls, ImagesThatGoRowByRowComeBack) {
    // The smallest ones that do, and an odd size.
    constexpr int kSizes[][2] = {{256, 256}, {233, 293}};
    for (const Kind kind : kKinds)
        for (const auto& [width, height] : kSizes) {
            const RawImage image = imageOf(kind, Content::photo, width, height);
            const Bytes stream = plain.compress(image);
            const Bytes cut = test::prefixOf(stream, stream.size() / 2);
            for (const Side side : test::kBothSides) {
                SCOPED_TRACE(testing::Message() << kind.bytesPerPixel << " bytes, " << width
                                                << " x " << height << ", " << nameOf(side));
                expectRoundTrip(image, 0, side);
                expectDecoding(cut, side);
                for (std::uint32_t levels = 1; levels <= 5; ++levels)
                    expectDecoding(cut, side, levels);
                if (HasFatalFailure()) return;
            }
        }
}

TEST_P(GuardedCalls, StreamsCutAnywhereDecodeLikeThoseOfThePlainKernels) {
    for (const Kind kind : kKinds) {
        const Bytes stream = plain.compress(imageOf(kind, Content::photo, 50, 33));
        // Every byte of the first words, then all places in a word.
        for (std::size_t size = 16; size <= stream.size(); size += size < 40 ? 1 : 29)
            for (const Side side : test::kBothSides) {
                SCOPED_TRACE(testing::Message() << size << ", " << nameOf(side));
                expectDecoding(test::prefixOf(stream, size), side);
                expectDecoding(test::prefixOf(stream, size), side, 1 + size % 4);
                if (HasFatalFailure()) return;
            }
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, GuardedCalls, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
