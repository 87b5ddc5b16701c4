// Row calls of the C interface make what the calls for whole images make.

#include "support/RowCalls.h"

#include <gtest/gtest.h>
#include <span>

#include "exact/ExposedImages.h"
#include "support/CountingHeap.h"
#include "support/EveryDecoder.h"

namespace {

using test::Bright;
using test::Bytes;
using test::Call;
using test::Content;
using test::CountingHeap;
using test::Portions;
using test::RawImage;
using test::SampleKind;

constexpr SampleKind kKinds[] = {{1, 8}, {3, 8}, {2, 11}, {2, 12}, {2, 16}};

void expectSameCall(const Call& expected, const Call& actual) {
    test::expectSameOutcome(expected, actual);
    EXPECT_EQ(actual.result.stream_bytes, expected.result.stream_bytes);
    EXPECT_EQ(actual.result.loss, expected.result.loss);
    EXPECT_EQ(actual.result.rescue, expected.result.rescue);
}

class RowCalls : public testing::TestWithParam<SampleKind> {
protected:
    void expectSameStream(const RawImage& image, const Portions& portions, std::size_t gapBytes) {
        SCOPED_TRACE(test::nameOf(image));
        for (const std::uint32_t flags : {0U, 1U * TESK_PLAIN, 1U * TESK_UNVERIFIED})
            for (const std::size_t budget : {0U, 17U, 300U}) {
                const test::Codec codec = test::makeCodecWithFlags(flags);
                const Call whole = test::compressCall(codec.get(), image, budget);
                const Call rows = test::pushCall(codec.get(), image, budget, portions, gapBytes);
                expectSameCall(whole, rows);
                rescues |= rows.result.rescue;
            }
    }
    RawImage make(Content content, int width, int height) const {
        return test::makeImage(content, GetParam().bytesPerPixel, GetParam().bitsPerPixel, width,
                               height);
    }
    RawImage makeBright(Bright look, int width, int height) const {
        return test::makeBright(look, GetParam().bytesPerPixel, GetParam().bitsPerPixel, width,
                                height);
    }

    std::uint32_t rescues = 0;
};

TEST_P(RowCalls, MakeTheStreamOfTheWholeImage) {
    for (const auto& [width, height] :
         {std::pair(0, 7), {7, 0}, {0, 0}, {40, 30}, {65, 33}, {600, 9}})
        for (const Content content : {Content::photo, Content::noise, Content::flat})
            for (const Portions& portions : {Portions{1}, {3, 1, 7}, {1000}})
                expectSameStream(make(content, width, height), portions, 5);
}

TEST_P(RowCalls, MakeTheStreamOfTheWholeImageAtEverySmallSize) {
    constexpr int kGreatestSide = test::kRunsInFull ? 20 : 9;
    for (int height = 0; height <= kGreatestSide; ++height)
        for (int width = 0; width <= kGreatestSide; ++width)
            for (const Content content : {Content::flat, Content::noise})
                expectSameStream(make(content, width, height), {2}, 0);
}

/// All but those that need other declared bits, which take the rows a second time.
TEST_P(RowCalls, RescueWhatTheWholeImageRescues) {
    const std::size_t sizes = test::kRunsInFull ? std::size(test::kExposedSizes) - 1 : 3;
    for (const auto& [width, height] : std::span(test::kExposedSizes).first(sizes))
        for (const Bright look : test::kAllBrights)
            expectSameStream(makeBright(look, width, height), {64}, 0);
    expectSameStream(makeBright(Bright::flat, 2, 50), {1}, 0);
    const bool isShort = GetParam().bitsPerPixel < 12;
    const std::uint32_t expected =
        isShort ? TESK_RESCUE_OTHER_REPRESENTATIVE : TESK_RESCUE_WHOLE_WRAPS;
    EXPECT_EQ(rescues & expected, expected) << rescues;
}

TEST_P(RowCalls, GiveTheImageOfEveryPrefix) {
    const test::Codec codec = test::makeCodec();
    for (const auto& [width, height] :
         {std::pair(40, 30), {3, 9}, {9, 3}, {0, 5}, {5, 0}, {1, 8}}) {
        const RawImage image = make(Content::photo, width, height);
        const Bytes stream =
            test::compressCall(test::makeCodecWithFlags(TESK_PLAIN).get(), image).bytes;
        for (std::size_t size = 16; size <= stream.size(); size += 1 + size / 32) {
            const Bytes prefix = test::prefixOf(stream, size);
            const Call whole = test::decompressCall(codec.get(), prefix);
            expectSameCall(whole, test::pullCall(codec.get(), prefix));
            expectSameCall(whole, test::pullCall(codec.get(), prefix, {2, 5}, 3));
        }
        const Call complete = test::pullCall(codec.get(), stream, {1000});
        EXPECT_EQ(complete.status, TESK_OK);
    }
}

TEST_P(RowCalls, KeepALimitOfTheirPeak) {
    const RawImage image = make(Content::photo, 300, 200);
    const Call free = test::pushCall(test::makeCodec().get(), image);
    const Call freeBack = test::pullCall(test::makeCodec().get(), free.bytes);
    for (const std::size_t less : {0U, 1U}) {
        tesk_options options = TESK_OPTIONS_INIT;
        options.max_memory_bytes = free.result.peak_memory_bytes - less;
        const Call bound = test::pushCall(test::makeCodec(&options).get(), image);
        EXPECT_EQ(bound.status, less == 0 ? TESK_OK : TESK_LIMIT_EXCEEDED);
        options.max_memory_bytes = freeBack.result.peak_memory_bytes - less;
        const Call back = test::pullCall(test::makeCodec(&options).get(), free.bytes);
        EXPECT_EQ(back.status, less == 0 ? TESK_OK : TESK_LIMIT_EXCEEDED);
    }
}

TEST_P(RowCalls, EndAtEveryAllocationThatFailsAndTheCodecGoesOn) {
    const RawImage images[] = {make(Content::photo, 40, 30), makeBright(Bright::flat, 17, 25)};
    for (const RawImage& image : images) {
        CountingHeap heap;
        const tesk_options options = heap.options();
        const test::Codec codec = test::makeCodec(&options);
        heap.restart();
        const Call whole = test::pushCall(codec.get(), image);
        const std::size_t pushes = heap.calls;
        heap.restart();
        const Call back = test::pullCall(codec.get(), whole.bytes);
        const std::size_t pulls = heap.calls;
        EXPECT_EQ(back.bytes, image.bytes);
        for (std::size_t n = 0; n < pushes + pulls; ++n) {
            heap.restart();
            heap.failAt = n < pushes ? n : n - pushes;
            const Call call = n < pushes ? test::pushCall(codec.get(), image)
                                         : test::pullCall(codec.get(), whole.bytes);
            heap.failAt = CountingHeap::kNever;
            EXPECT_EQ(call.status, TESK_OUT_OF_MEMORY) << n;
            EXPECT_EQ(heap.live.size(), 1U) << "the codec alone";
        }
        expectSameCall(whole, test::pushCall(codec.get(), image));
    }
}

TEST_P(RowCalls, EndAtEveryAllocationThatStopsThem) {
    const RawImage image = makeBright(Bright::flat, 17, 25);
    CountingHeap heap;
    const tesk_options options = heap.options();
    const test::Codec codec = test::makeCodec(&options);
    heap.stopped = codec.get();
    heap.restart();
    const Call whole = test::pushCall(codec.get(), image);
    const std::size_t pushes = heap.calls;
    for (std::size_t n = 0; n < pushes; ++n) {
        heap.restart();
        heap.stopAt = n;
        EXPECT_EQ(test::pushCall(codec.get(), image).status, TESK_STOPPED) << n << " of " << pushes;
        heap.stopAt = CountingHeap::kNever;
        EXPECT_EQ(heap.live.size(), 1U) << "the codec alone";
        tesk_clear_stop(codec.get());
    }
    expectSameCall(whole, test::pushCall(codec.get(), image));
}

INSTANTIATE_TEST_SUITE_P(Kinds, RowCalls, testing::ValuesIn(kKinds), [](const auto& instance) {
    return std::to_string(instance.param.bytesPerPixel) + "Bytes" +
           std::to_string(instance.param.bitsPerPixel) + "Bits";
});

TEST(RowCallsOfTooFewDeclaredBits, AreRefusedByName) {
    RawImage image = test::makeImage(Content::noise, 2, 16, 32, 32);
    image.bitsPerPixel = 9;
    const test::Codec codec = test::makeCodec();
    EXPECT_EQ(test::compressCall(codec.get(), image).result.rescue, TESK_RESCUE_DECLARED_BITS + 0U);
    for (const std::size_t budget : {0U, 300U}) {
        const Call call = test::pushCall(codec.get(), image, budget);
        EXPECT_EQ(call.status, TESK_NOT_RESTORABLE);
        EXPECT_EQ(call.result.loss, TESK_LOSS_WRAPPED);
        EXPECT_EQ(call.result.stream_bytes, 0U);
    }
    image.bitsPerPixel = 12;
    expectSameCall(test::compressCall(codec.get(), image), test::pushCall(codec.get(), image));
}

}  // namespace
