// What a codec keeps from call to call: how often it asks its allocator, and what it gives back when.

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "support/CodecCalls.h"
#include "support/CountingHeap.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;

class KeptMemory : public testing::Test {
protected:
    void makeCodec(std::size_t mostKeptBytes, std::size_t mostMemoryBytes = 0) {
        tesk_options options = heap.options();
        options.most_kept_bytes = mostKeptBytes;
        options.max_memory_bytes = mostMemoryBytes;
        codec = test::makeCodec(&options);
        codecBytes = heap.liveBytes;
    }
    /// Returns: how often the allocator was asked.
    std::size_t roundTrip(const RawImage& image) {
        heap.restart();
        const Bytes stream = test::compressCall(codec.get(), image).bytes;
        EXPECT_EQ(test::decompressCall(codec.get(), stream).bytes, image.bytes);
        return heap.calls;
    }
    /// Between calls.
    std::size_t keptBytes() const { return heap.liveBytes - codecBytes; }

    // The codec goes first.
    test::CountingHeap heap;
    test::Codec codec;
    std::size_t codecBytes = 0;
};

RawImage photo(int bytesPerPixel, int side) {
    return test::makeImage(Content::photo, bytesPerPixel, bytesPerPixel == 2 ? 16 : 8, side, side);
}

TEST_F(KeptMemory, TheSecondCallAsksForTheOutputBlockAlone) {
    for (const int bytesPerPixel : {1, 2, 3}) {
        makeCodec(TESK_KEPT_BYTES);
        const RawImage image = photo(bytesPerPixel, 300);
        EXPECT_GT(roundTrip(image), 20U);
        EXPECT_EQ(roundTrip(image), 1U);
    }
}

TEST_F(KeptMemory, WithoutKeepingEveryCallAsksAsTheFirstOne) {
    makeCodec(0);
    const RawImage image = photo(1, 100);
    const std::size_t first = roundTrip(image);
    EXPECT_EQ(keptBytes(), 0U);
    EXPECT_EQ(roundTrip(image), first);
    EXPECT_EQ(keptBytes(), 0U);
}

TEST_F(KeptMemory, IsNoMoreThanItsBound) {
    for (const std::size_t bound : {1U, 1000U, 30000U, 100000U}) {
        makeCodec(bound);
        for (int round = 0; round < 3; ++round) {
            roundTrip(photo(3, 200));
            EXPECT_LE(keptBytes(), bound);
        }
        EXPECT_EQ(keptBytes() == 0, bound == 1) << "otherwise small blocks find room";
    }
}

TEST_F(KeptMemory, OfOtherImagesGoesWhenTwoCallsDidNotNeedIt) {
    makeCodec(TESK_KEPT_BYTES);
    roundTrip(photo(1, 20));
    roundTrip(photo(1, 20));
    const std::size_t small = keptBytes();
    roundTrip(photo(2, 500));
    EXPECT_GT(keptBytes(), 4 * small);
    for (int round = 0; round < 2; ++round)
        roundTrip(photo(1, 20));
    EXPECT_EQ(keptBytes(), small);
}

TEST_F(KeptMemory, CountsForTheLimitOfACall) {
    const RawImage image = photo(2, 300);
    makeCodec(TESK_KEPT_BYTES);
    tesk_result result = test::compressCall(codec.get(), image).result;
    const std::size_t peak = result.peak_memory_bytes;
    makeCodec(TESK_KEPT_BYTES, peak);
    for (int round = 0; round < 3; ++round) {
        heap.mostLiveBytes = 0;
        EXPECT_EQ(test::compressCall(codec.get(), image).status, TESK_OK);
        EXPECT_EQ(test::compressCall(codec.get(), photo(1, 333)).status, TESK_OK);
        EXPECT_LE(heap.mostLiveBytes - codecBytes, peak);
    }
}

TEST_F(KeptMemory, GoesBeforeTheAllocatorHasTheLastWord) {
    makeCodec(TESK_KEPT_BYTES);
    roundTrip(photo(2, 300));
    ASSERT_GT(keptBytes(), 0U);
    heap.restart();
    heap.failAt = 0;
    heap.failsOnce = true;
    EXPECT_EQ(test::compressCall(codec.get(), photo(1, 400)).status, TESK_OK);
}

TEST_F(KeptMemory, IsGivenBackOnRequest) {
    makeCodec(TESK_KEPT_BYTES);
    roundTrip(photo(1, 100));
    ASSERT_GT(keptBytes(), 0U);
    tesk_trim(codec.get());
    EXPECT_EQ(keptBytes(), 0U);
    EXPECT_GT(roundTrip(photo(1, 100)), 20U);
    tesk_trim(nullptr);
}

TEST_F(KeptMemory, ServesImagesRowByRow) {
    makeCodec(TESK_KEPT_BYTES);
    const RawImage image = photo(1, 200);
    const tesk_image geometry = test::geometryOf(image);
    std::size_t asked = 0;
    for (int round = 0; round < 2; ++round) {
        heap.restart();
        ASSERT_EQ(tesk_compress_begin(codec.get(), &geometry, 0), TESK_OK);
        ASSERT_EQ(tesk_compress_rows(codec.get(), image.bytes.data(), 0, geometry.height), TESK_OK);
        void* block = nullptr;
        ASSERT_EQ(tesk_compress_end(codec.get(), &block, nullptr), TESK_OK);
        tesk_release_block(codec.get(), block);
        asked = heap.calls;
    }
    EXPECT_EQ(asked, 1U);
}

TEST_F(KeptMemory, IsTheSameForStoppedCalls) {
    makeCodec(TESK_KEPT_BYTES);
    const RawImage image = photo(1, 200);
    roundTrip(image);
    tesk_stop(codec.get());
    EXPECT_EQ(test::compressCall(codec.get(), image).status, TESK_STOPPED);
    tesk_clear_stop(codec.get());
    EXPECT_EQ(roundTrip(image), 1U);
}

/// Returns: pages that the thread touched for the first time since the last call.
long pageFaults() {
    static long before = 0;
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    const long since = usage.ru_minflt - before;
    before = usage.ru_minflt;
    return since;
}

TEST(KeptPages, TheSecondCallTouchesNoneForTheFirstTime) {
    for (const int bytesPerPixel : {1, 2, 3}) {
        const RawImage image = photo(bytesPerPixel, 1000);
        const tesk_image geometry = test::geometryOf(image);
        const test::Codec codec = test::makeCodec();
        Bytes stream(tesk_compress_bound(&geometry));
        Bytes pixels(image.bytes.size());
        tesk_result result = TESK_RESULT_INIT;
        long faults = 0;
        for (int round = 0; round < 3; ++round) {
            pageFaults();
            ASSERT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, stream.data(),
                                    stream.size(), &result),
                      TESK_OK);
            ASSERT_EQ(tesk_decompress(codec.get(), stream.data(), result.stream_bytes,
                                      pixels.data(), pixels.size(), 0, nullptr),
                      TESK_OK);
            faults = pageFaults();
        }
        EXPECT_EQ(faults, 0);
    }
}

}  // namespace
