#include <gtest/gtest.h>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CountingHeap.h"

// max_pixels, max_memory_bytes and peak_memory_bytes.

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;

class TeskLimits : public testing::Test {
protected:
    test::Codec codecWith(std::size_t maxPixels, std::size_t maxMemoryBytes) {
        tesk_options options = heap.options();
        options.max_pixels = maxPixels;
        options.max_memory_bytes = maxMemoryBytes;
        test::Codec codec = test::makeCodec(&options);
        heap.restart();
        return codec;
    }
    /// Checks a job under all limits around those that it meets.
    template <class Work>
    void expectLimitsToHold(Work work) {
        const Call free = work(codecWith(0, 0).get());
        const std::size_t peak = free.result.peak_memory_bytes;
        EXPECT_EQ(free.status, TESK_OK);
        ASSERT_GT(peak, 1000U);
        int refusedWhileCoding = 0;
        for (std::size_t limit = 1; limit < peak; limit += 1 + peak / 300) {
            const Call call = work(codecWith(0, limit).get());
            EXPECT_EQ(call.status, TESK_LIMIT_EXCEEDED) << limit;
            EXPECT_LE(call.result.peak_memory_bytes, limit);
            if (heap.calls > 2) ++refusedWhileCoding;
        }
        EXPECT_GT(refusedWhileCoding, 10);
        EXPECT_EQ(work(codecWith(0, peak - 1).get()).status, TESK_LIMIT_EXCEEDED);
        const Call enough = work(codecWith(0, peak).get());
        EXPECT_EQ(enough.status, TESK_OK);
        EXPECT_EQ(enough.bytes, free.bytes);
        EXPECT_EQ(enough.result.peak_memory_bytes, peak);
    }

    test::CountingHeap heap;
    RawImage image = test::makeImage(Content::noise, 3, 8, 30, 20);
    Bytes stream = test::encode(image);
};

TEST_F(TeskLimits, TheLargestImageIsCountedInPixels) {
    const test::Codec exact = codecWith(600, 0);
    EXPECT_EQ(test::compressCall(exact.get(), image).status, TESK_OK);
    EXPECT_EQ(test::decompressCall(exact.get(), stream).status, TESK_OK);
    const test::Codec less = codecWith(599, 0);
    EXPECT_EQ(test::compressCall(less.get(), image).status, TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(test::decompressCall(less.get(), stream).status, TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(heap.calls, 0U) << "refused before anything is allocated";
    const RawImage none = test::makeImage(Content::flat, 1, 8, 65535, 0);
    EXPECT_EQ(test::compressCall(codecWith(1, 0).get(), none).status, TESK_OK);
}

TEST_F(TeskLimits, AnImageThatCannotFitIsRefusedBeforeAnyAllocation) {
    const Bytes hostile = test::headed(qmx::makeHeader(2, 16, 65535, 65535), {8, 1, 2, 3});
    constexpr std::size_t kFourRows = 4 * 65536 * 4;
    for (const std::size_t limit : {std::size_t{1}, std::size_t{4096}, kFourRows - 1}) {
        const test::Codec codec = codecWith(0, limit);
        tesk_image shape = TESK_IMAGE_INIT;
        ASSERT_EQ(tesk_probe(hostile.data(), hostile.size(), &shape), TESK_OK);
        unsigned char pixel = 0xA5;
        // Neither call may come to the pixels: there is only one byte of them.
        EXPECT_EQ(tesk_compress(codec.get(), &shape, &pixel, 0, 0, &pixel, 1, nullptr),
                  TESK_LIMIT_EXCEEDED);
        EXPECT_EQ(tesk_decompress(codec.get(), hostile.data(), hostile.size(), &pixel,
                                  std::size_t{1} << 40, 0, nullptr),
                  TESK_LIMIT_EXCEEDED);
        EXPECT_EQ(pixel, 0xA5);
        EXPECT_EQ(heap.calls, 0U);
    }
}

TEST_F(TeskLimits, AnImageThatTakesManyRowsIsRefusedBeforeThese) {
    const Bytes hostile = test::headed(qmx::makeHeader(2, 16, 65535, 65535), {8, 1, 2, 3});
    const test::Codec codec = codecWith(0, 8 << 20);
    unsigned char pixel = 0xA5;
    EXPECT_EQ(tesk_decompress(codec.get(), hostile.data(), hostile.size(), &pixel,
                              std::size_t{1} << 40, 0, nullptr),
              TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(pixel, 0xA5);
    for (const std::size_t size : heap.sizes)
        EXPECT_LT(size, std::size_t{8} << 20);
}

TEST_F(TeskLimits, CompressionKeepsEveryLimit) {
    expectLimitsToHold([&](tesk_codec* codec) { return test::compressCall(codec, image); });
}

TEST_F(TeskLimits, CutCompressionOfWideSamplesKeepsEveryLimit) {
    const RawImage wide = test::makeImage(Content::photo, 2, 16, 25, 35);
    expectLimitsToHold([&](tesk_codec* codec) {
        Call call = test::compressCall(codec, wide, 300);
        if (call.status == TESK_CUT) call.status = TESK_OK;
        return call;
    });
}

TEST_F(TeskLimits, ABlockCountsTowardsTheLimit) {
    // A block so large that it is not hidden by what the coder has given back before.
    image = test::makeImage(Content::noise, 3, 8, 600, 600);
    const Call toBlock = test::compressCall(codecWith(0, 0).get(), image);
    const tesk_image geometry = test::geometryOf(image);
    tesk_result result = TESK_RESULT_INIT;
    Bytes out(toBlock.bytes.size());
    EXPECT_EQ(tesk_compress(codecWith(0, 0).get(), &geometry, image.bytes.data(), 0, 0, out.data(),
                            out.size(), &result),
              TESK_OK);
    EXPECT_EQ(out, toBlock.bytes);
    EXPECT_GT(toBlock.result.peak_memory_bytes, result.peak_memory_bytes + out.size() / 2);
    EXPECT_LE(toBlock.result.peak_memory_bytes, result.peak_memory_bytes + out.size());
}

TEST_F(TeskLimits, DecompressionHoldsNoMoreThanItSays) {
    const Call free = test::decompressCall(codecWith(0, 0).get(), stream);
    const std::size_t peak = free.result.peak_memory_bytes;
    std::size_t sum = 0;
    for (const std::size_t size : heap.sizes)
        sum += size;
    EXPECT_LE(peak, sum);
    const Call enough = test::decompressCall(codecWith(0, peak).get(), stream);
    EXPECT_EQ(enough.bytes, image.bytes);
    for (std::size_t limit = 1; limit < peak; limit += 1 + peak / 300) {
        const Call call = test::decompressCall(codecWith(0, limit).get(), stream);
        EXPECT_EQ(call.status, TESK_LIMIT_EXCEEDED) << limit;
        EXPECT_LE(call.result.peak_memory_bytes, limit);
    }
    EXPECT_EQ(test::decompressCall(codecWith(0, peak - 1).get(), stream).status,
              TESK_LIMIT_EXCEEDED);
}

}  // namespace
