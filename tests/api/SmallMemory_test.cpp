// What a call holds for a small picture: tables of coders, queues and windows, much more than its samples.

#include <gtest/gtest.h>

#include "coding/syntax/CSectionTable.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/StreamBuilder.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;

constexpr int kSide = 48;

/// The most bytes for a picture.
struct Kind {
    int bytesPerPixel;
    int bitsPerPixel;
    std::size_t compressionBytes;
    std::size_t decompressionBytes;
};
constexpr Kind kKinds[] = {{1, 8, 100'000, 40'000},
                           {3, 8, 260'000, 120'000},
                           {2, 11, 190'000, 75'000},
                           {2, 12, 190'000, 75'000},
                           {2, 16, 190'000, 75'000}};

class SmallMemory : public testing::TestWithParam<Kind> {};

TEST_P(SmallMemory, OfAPictureOfAnyContentIsBounded) {
    const Kind& kind = GetParam();
    std::size_t most = 0;
    std::size_t mostBack = 0;
    for (const int sampleBits : {kind.bitsPerPixel, kind.bytesPerPixel == 2 ? 16 : 8})
        for (const Content content :
             {Content::flat, Content::gradient, Content::noise, Content::photo, Content::sparse}) {
            SCOPED_TRACE(nameOf(content));
            RawImage image = test::makeImage(content, kind.bytesPerPixel, sampleBits, kSide, kSide);
            image.bitsPerPixel = kind.bitsPerPixel;
            for (const std::uint32_t flags : {0U, 1U * TESK_PLAIN}) {
                const test::Codec codec = test::makeCodecWithFlags(flags);
                const Call compressed = test::compressCall(codec.get(), image);
                EXPECT_LE(compressed.result.peak_memory_bytes, kind.compressionBytes);
                most = std::max(most, compressed.result.peak_memory_bytes);
                const Call back = test::decompressCall(codec.get(), compressed.bytes);
                EXPECT_LE(back.result.peak_memory_bytes, kind.decompressionBytes);
                mostBack = std::max(mostBack, back.result.peak_memory_bytes);
            }
        }
    std::printf("at most %zu, %zu bytes\n", most, mostBack);
}

// The bit planes of a stream are those that it names, up to those of the coefficients.
TEST_P(SmallMemory, OfAStreamWithSectionsOfEveryBitPlaneIsBounded) {
    const Kind& kind = GetParam();
    const qmx::TKHeader header =
        qmx::makeHeader(kind.bytesPerPixel, kind.bitsPerPixel, kSide, kSide);
    const int bitPlanes =
        kind.bitsPerPixel > 11 ? qmx::kTableBitPlanes<int> : qmx::kTableBitPlanes<short>;
    test::StreamBuilder stream(kSide, kSide, bitPlanes - 1);
    for (int order = 0; order <= 4; ++order)
        for (int p = 0; p < bitPlanes; ++p)
            stream.header(0, order, false, 0);
    const test::Codec codec = test::makeCodec();
    const Call back = test::decompressCall(codec.get(), test::headed(header, stream.cut()));
    EXPECT_EQ(back.status, TESK_CUT);
    EXPECT_LE(back.result.peak_memory_bytes, 2 * kind.decompressionBytes);
}

INSTANTIATE_TEST_SUITE_P(Kinds, SmallMemory, testing::ValuesIn(kKinds), [](const auto& instance) {
    return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
           std::to_string(instance.param.bitsPerPixel) + "Bits";
});

}  // namespace
