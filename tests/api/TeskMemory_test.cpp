#include <cstdlib>
#include <gtest/gtest.h>

#include "api/tesk.h"
#include "support/Arena.h"
#include "support/CodecCalls.h"
#include "support/CountingHeap.h"
#include "support/ProcessHeap.h"

// Where the memory of a codec comes from.

namespace {

using test::Arena;
using test::Bytes;
using test::Content;
using test::RawImage;

/// Compresses and decompresses with a codec of its own. Returns: calls of the process's allocators.
std::size_t allocationsOfRoundTrip(const tesk_options* options, const RawImage& image) {
    const tesk_image geometry = test::geometryOf(image);
    Bytes out(image.bytes.size());
    tesk_codec* codec = nullptr;
    void* block = nullptr;
    tesk_result result = TESK_RESULT_INIT;
    test::processHeap = {};
    test::processHeap.isWatched = true;
    tesk_create(options, &codec);
    const tesk_status compressed =
        tesk_compress_to_block(codec, &geometry, image.bytes.data(), 0, 0, &block, &result);
    const tesk_status decompressed =
        tesk_decompress(codec, block, result.stream_bytes, out.data(), out.size(), 0, nullptr);
    tesk_release_block(codec, block);
    tesk_destroy(codec);
    test::processHeap.isWatched = false;
    EXPECT_EQ(compressed, TESK_OK);
    EXPECT_EQ(decompressed, TESK_OK);
    EXPECT_EQ(out, image.bytes);
    return test::processHeap.allocations;
}

TEST(TeskMemory, AllOfItComesFromTheHooks) {
    for (const int bytes : {1, 2, 3}) {
        const RawImage image = test::makeImage(Content::photo, bytes, bytes == 2 ? 16 : 8, 40, 30);
        Arena arena;
        const tesk_options options = arena.options();
        EXPECT_EQ(allocationsOfRoundTrip(&options, image), 0U);
        EXPECT_EQ(arena.live, 0);
        EXPECT_GT(allocationsOfRoundTrip(nullptr, image), 10U) << "the count works";
    }
}

TEST(TeskMemory, BlocksOutliveTheCodec) {
    test::CountingHeap heap;
    const tesk_options options = heap.options();
    const RawImage image = test::makeImage(Content::photo, 1, 8, 20, 20);
    const tesk_image geometry = test::geometryOf(image);
    test::Codec codec = test::makeCodec(&options);
    void* block = nullptr;
    tesk_result result = TESK_RESULT_INIT;
    tesk_compress_to_block(codec.get(), &geometry, image.bytes.data(), 0, 0, &block, &result);
    codec.reset();
    ASSERT_EQ(heap.live.size(), 1U);
    EXPECT_EQ(heap.live.begin()->first, block);
    EXPECT_EQ(heap.live.begin()->second, result.stream_bytes);
    options.release(options.user, block);
}

TEST(TeskMemory, BlocksAreAsLongAsTheirStream) {
    test::CountingHeap heap;
    tesk_options options = heap.options();
    options.flags = TESK_UNVERIFIED;
    const test::Codec codec = test::makeCodec(&options);
    // An image that comes back: nothing is allocated after the block to find that out.
    const RawImage image = test::makeImage(Content::photo, 3, 8, 64, 64);
    for (const std::size_t budget : {0U, 16U, 17U, 100U, 100000U}) {
        const test::Call call = test::compressCall(codec.get(), image, budget);
        EXPECT_EQ(heap.sizes.back(), call.result.stream_bytes);
        EXPECT_EQ(call.bytes.size(), call.result.stream_bytes);
        EXPECT_EQ(call.result.loss, call.status == TESK_OK ? TESK_LOSS_NONE : TESK_LOSS_BUDGET);
    }
}

TEST(TeskMemory, EveryFailureIsReportedAndLeavesACodecThatWorks) {
    for (const int bytes : {1, 2, 3}) {
        const RawImage image = test::makeImage(Content::photo, bytes, bytes == 2 ? 16 : 8, 9, 8);
        test::CountingHeap heap;
        const tesk_options options = heap.options();
        const test::Codec codec = test::makeCodec(&options);
        const Bytes stream = test::compressCall(codec.get(), image).bytes;
        const auto sweep = [&](auto work) {
            heap.restart();
            const test::Call good = work();
            const std::size_t calls = heap.calls;
            EXPECT_EQ(good.status, TESK_OK);
            EXPECT_GT(calls, 3U);
            for (std::size_t n = 0; n < 2 * calls; ++n) {
                heap.restart();
                heap.failAt = n / 2;
                heap.failsOnce = n % 2 == 1;
                EXPECT_EQ(work().status, TESK_OUT_OF_MEMORY) << n / 2 << " of " << calls;
                EXPECT_EQ(heap.live.size(), 1U) << "the codec alone";
                heap.failAt = test::CountingHeap::kNever;
            }
            EXPECT_EQ(work().bytes, good.bytes);
        };
        sweep([&] { return test::compressCall(codec.get(), image); });
        sweep([&] { return test::decompressCall(codec.get(), stream); });
        for (const std::uint32_t levels : {1U, 2U})
            sweep([&] { return test::reduceCall(codec.get(), stream, levels); });
    }
}

TEST(TeskMemory, AStopInTheMiddleOfACallEndsItAndLeavesNothing) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 24, 24);
    test::CountingHeap heap;
    const tesk_options options = heap.options();
    const test::Codec codec = test::makeCodec(&options);
    heap.stopped = codec.get();
    heap.restart();
    const Bytes stream = test::compressCall(codec.get(), image).bytes;
    const std::size_t calls = heap.calls;
    for (std::size_t n = 0; n < calls; ++n) {
        heap.restart();
        heap.stopAt = n;
        const test::Call call = test::compressCall(codec.get(), image);
        // The last allocations are for the comparison of a stream that is there already.
        EXPECT_EQ(call.status, TESK_STOPPED) << n;
        EXPECT_EQ(call.result.stream_bytes, 0U);
        EXPECT_EQ(heap.live.size(), 1U);
        tesk_clear_stop(codec.get());
    }
    for (std::size_t n = 0; n < 4; ++n) {
        heap.restart();
        heap.stopAt = n;
        EXPECT_EQ(test::decompressCall(codec.get(), stream).status, TESK_STOPPED) << n;
        EXPECT_EQ(heap.live.size(), 1U);
        tesk_clear_stop(codec.get());
    }
    heap.stopAt = test::CountingHeap::kNever;
    EXPECT_EQ(test::compressCall(codec.get(), image).bytes, stream);
}

}  // namespace
