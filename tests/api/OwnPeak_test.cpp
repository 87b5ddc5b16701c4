#include <gtest/gtest.h>
#include <span>

#include "exact/ExposedImages.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/EveryDecoder.h"

// A call whose limit is the most memory that it held succeeds, and does the same.

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;
using test::SampleKind;

test::Codec limitedCodec(std::uint32_t flags, std::size_t maxMemoryBytes) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = flags;
    options.max_memory_bytes = maxMemoryBytes;
    return test::makeCodec(&options);
}

/// Sizes with and without levels and rescues, small and large.
constexpr int kSizes[][2] = {{0, 9},     {1, 1},     {5, 5},     {2, 900},   {64, 64},  {300, 200},
                             {256, 256}, {255, 400}, {700, 300}, {500, 500}, {900, 70}, {1, 300}};

class OwnPeak : public testing::TestWithParam<SampleKind> {
protected:
    template <class Work>
    void expectEnough(std::uint32_t flags, Work work) {
        const Call free = work(limitedCodec(flags, 0).get());
        const std::size_t peak = free.result.peak_memory_bytes;
        const Call bound = work(limitedCodec(flags, peak).get());
        EXPECT_EQ(bound.status, free.status);
        EXPECT_EQ(bound.bytes, free.bytes);
        EXPECT_EQ(bound.result.loss, free.result.loss);
        EXPECT_EQ(bound.result.rescue, free.result.rescue);
        EXPECT_EQ(bound.result.peak_memory_bytes, peak);
        ++calls;
        if (peak < 2) return;  // a limit of 0 is none
        const Call less = work(limitedCodec(flags, peak - 1).get());
        // Plain streams do without the comparison where there is no memory for it.
        if (less.status == TESK_LIMIT_EXCEEDED) return;
        EXPECT_EQ(less.status, free.status);
        EXPECT_EQ(less.result.loss, TESK_LOSS_UNCHECKED);
    }

    void tryImage(const RawImage& image) {
        SCOPED_TRACE(std::to_string(image.width) + " x " + std::to_string(image.height));
        for (const std::uint32_t flags : {0U, 1U * TESK_PLAIN, 1U * TESK_UNVERIFIED})
            for (const std::size_t budget :
                 {std::size_t{0}, std::size_t{17}, std::size_t{400}, std::size_t{1} << 30})
                expectEnough(flags, [&](tesk_codec* codec) {
                    return test::compressCall(codec, image, budget);
                });
        const Bytes stream =
            test::compressCall(test::makeCodecWithFlags(TESK_PLAIN).get(), image).bytes;
        for (const std::size_t size : {stream.size(), stream.size() / 2})
            if (size >= sizeof(qmx::TKHeader))
                expectEnough(0, [&](tesk_codec* codec) {
                    return test::decompressCall(codec, test::prefixOf(stream, size));
                });
        for (int k = 1; k <= qmx::levelCount(image.width, image.height); ++k)
            expectEnough(0, [&](tesk_codec* codec) {
                return test::reduceCall(codec, stream, static_cast<std::uint32_t>(k));
            });
    }

    std::size_t calls = 0;
};

TEST_P(OwnPeak, IsALimitThatACallKeeps) {
    const auto [bytesPerPixel, bitsPerPixel] = GetParam();
    const std::size_t sizes = test::kRunsInFull ? std::size(kSizes) : 6;
    for (const auto& [width, height] : std::span(kSizes).first(sizes)) {
        tryImage(test::makeImage(Content::photo, bytesPerPixel, bitsPerPixel, width, height));
        tryImage(
            test::makeBright(test::Bright::nearlyFlat, bytesPerPixel, bitsPerPixel, width, height));
    }
    std::printf("%zu calls\n", calls);
}

// Takes minutes: run with --gtest_also_run_disabled_tests.
TEST_P(OwnPeak, DISABLED_OfEverySmallSizeIsALimitThatACallKeeps) {
    const auto [bytesPerPixel, bitsPerPixel] = GetParam();
    constexpr int kGreatestSide = 40;
    for (int height = 0; height <= kGreatestSide; ++height)
        for (int width = 0; width <= kGreatestSide; ++width)
            tryImage(test::makeBright(test::Bright::nearlyFlat, bytesPerPixel, bitsPerPixel, width,
                                      height));
    std::printf("%zu calls\n", calls);
}

INSTANTIATE_TEST_SUITE_P(SampleTypes, OwnPeak,
                         testing::Values(SampleKind{1, 8}, SampleKind{3, 8}, SampleKind{2, 11},
                                         SampleKind{2, 12}, SampleKind{2, 16}));

TEST(Limits, CountWhatIsHeldNotWhatPlanesWouldTake) {
    const RawImage image = test::makeImage(Content::gradient, 1, 8, 2500, 2000);
    const std::size_t planeBytes = 2 * image.bytes.size();
    for (const std::uint32_t flags : {0U, 1U * TESK_PLAIN})
        EXPECT_EQ(test::compressCall(limitedCodec(flags, planeBytes).get(), image).status, TESK_OK);
    const Bytes stream = test::compressCall(test::makeCodec().get(), image).bytes;
    EXPECT_EQ(test::decompressCall(limitedCodec(0, planeBytes / 8).get(), stream).status, TESK_OK);
}

}  // namespace
