// Calls go row by row: they hold no planes, however large the image is.

#include <gtest/gtest.h>

#include "support/CodecCalls.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;

struct Kind {
    int bytesPerPixel;
    int bitsPerPixel;
    /// Of the planes of an image.
    std::size_t bytesPerPixelOfPlanes;
    /// What compression holds besides planes and twice the stream, as chunks and as the block, at most.
    std::size_t compressionBytes;
};
constexpr Kind kKinds[] = {{1, 8, 2, 3'000'000},
                           {3, 8, 6, 7'500'000},
                           {2, 11, 2, 4'000'000},
                           {2, 12, 4, 5'500'000},
                           {2, 16, 4, 6'500'000}};

constexpr std::uint32_t kAllFlags[] = {0, TESK_UNVERIFIED, TESK_PLAIN};

class RowMemory : public testing::TestWithParam<Kind> {
protected:
    static RawImage image(int width, int height) {
        return test::makeImage(Content::photo, GetParam().bytesPerPixel, GetParam().bitsPerPixel,
                               width, height);
    }
};

TEST_P(RowMemory, ALargeImageTakesNoPlanes) {
    constexpr int kSide = 1000;
    constexpr std::size_t kPixels = std::size_t{kSide} * kSide;
    const RawImage large = image(kSide, kSide);
    for (const std::uint32_t flags : kAllFlags) {
        const test::Codec codec = test::makeCodecWithFlags(flags);
        const Call compressed = test::compressCall(codec.get(), large);
        EXPECT_EQ(compressed.result.rescue, 0U);
        EXPECT_LT(compressed.result.peak_memory_bytes,
                  GetParam().compressionBytes + 2 * compressed.bytes.size());
        const Call cut = test::compressCall(codec.get(), large, compressed.bytes.size() / 2);
        EXPECT_LT(cut.result.peak_memory_bytes,
                  GetParam().compressionBytes + 2 * compressed.bytes.size());
        const Call back = test::decompressCall(codec.get(), compressed.bytes);
        EXPECT_LT(back.result.peak_memory_bytes, GetParam().bytesPerPixelOfPlanes * kPixels / 2);
        EXPECT_TRUE(test::sameBytes(large.bytes, back.bytes));
    }
}

INSTANTIATE_TEST_SUITE_P(Kinds, RowMemory, testing::ValuesIn(kKinds), [](const auto& instance) {
    return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
           std::to_string(instance.param.bitsPerPixel) + "Bits";
});

}  // namespace
