#include <gtest/gtest.h>

#include "support/CodecCalls.h"

namespace {

using test::Content;
using test::RawImage;

/// What a call may hold: a constant, and bytes for each sample of the working planes, whose rows are
/// padded to multiples of 8 samples. docs/limits.md has the same table.
struct MemoryBound {
    int bytesPerPixel;
    int bitsPerPixel;
    std::size_t compressConstant;
    std::size_t compressPerSample;
    std::size_t decompressConstant;
    std::size_t decompressPerSample;
};

constexpr std::size_t kMegabyte = 1000000;
constexpr MemoryBound kBounds[] = {
    {1, 8, 7 * kMegabyte / 2, 5, 150000, 2},  {3, 8, 9 * kMegabyte, 5, 150000, 2},
    {2, 11, 5 * kMegabyte, 6, 150000, 2}, {2, 12, 6 * kMegabyte, 9, 300000, 4},
    {2, 16, 6 * kMegabyte, 9, 300000, 4},
};

std::size_t paddedSamples(const RawImage& image) {
    const auto stride = static_cast<std::size_t>((image.width + 7) / 8 * 8);
    const std::size_t planes = image.bytesPerPixel == 3 ? 3 : 1;
    return stride * static_cast<std::size_t>(image.height) * planes;
}

class MemoryBounds : public testing::TestWithParam<MemoryBound> {};

TEST_P(MemoryBounds, HoldForEverySizeAndContent) {
    const MemoryBound& bound = GetParam();
    constexpr int kSizes[][2] = {{0, 0},   {1, 1},     {1, 3000},  {5, 5},     {37, 53},
                                 {64, 64}, {300, 200}, {3000, 20}, {1023, 700}};
    const test::Codec codec = test::makeCodec();
    for (const Content content : {Content::flat, Content::photo, Content::noise}) {
        for (const auto& [width, height] : kSizes) {
            const RawImage image =
                test::makeImage(content, bound.bytesPerPixel, bound.bitsPerPixel, width, height);
            const std::size_t samples = paddedSamples(image);
            SCOPED_TRACE(std::string(nameOf(content)) + " " + std::to_string(width) + " x " +
                         std::to_string(height));
            const test::Call compressed = test::compressCall(codec.get(), image);
            EXPECT_LE(compressed.result.peak_memory_bytes,
                      bound.compressConstant + bound.compressPerSample * samples);
            const test::Call back = test::decompressCall(codec.get(), compressed.bytes);
            EXPECT_LE(back.result.peak_memory_bytes,
                      bound.decompressConstant + bound.decompressPerSample * samples);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(SampleTypes, MemoryBounds, testing::ValuesIn(kBounds),
                         [](const auto& instance) {
                             return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
                                    std::to_string(instance.param.bitsPerPixel) + "Bits";
                         });

}  // namespace
