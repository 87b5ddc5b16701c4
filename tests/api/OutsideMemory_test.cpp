// What calls of the C interface take behind the back of the caller's allocator: an exception of the C++
// runtime, where a stream or the memory ends early, and nothing else.

#include <gtest/gtest.h>

#include "support/Arena.h"
#include "support/EveryCall.h"
#include "support/ProcessHeap.h"

namespace {

using test::Arena;
using test::processHeap;

/// An exception that is a number or std::bad_alloc, behind the 128 bytes that the runtime puts in front of it.
constexpr std::size_t kMostBytesOutside = 136;

/// Makes a call with the heap of the process watched.
tesk_status watched(const test::NamedCall& call, tesk_codec* codec) {
    processHeap = {};
    processHeap.isWatched = true;
    const tesk_status status = call.make(codec);
    processHeap.isWatched = false;
    return status;
}

/// Of what the last watched call took.
void expectOneExceptionAtMost() {
    EXPECT_LE(processHeap.mostLive, 1);
    EXPECT_LE(processHeap.largestBytes, kMostBytesOutside);
    EXPECT_EQ(processHeap.live, 0) << "left behind";
}

TEST(OutsideMemory, IsOneExceptionAtATimeAtMost) {
    std::size_t calls = 0;
    std::size_t exceptions = 0;
    std::size_t largestBytes = 0;
    for (const auto& every : test::callsOfAllKinds())
        for (const test::NamedCall& call : every->calls) {
            SCOPED_TRACE(call.name);
            Arena arena;
            const tesk_options options = arena.options();
            const test::Codec codec = test::makeCodec(&options);
            EXPECT_EQ(watched(call, codec.get()), call.expected);
            expectOneExceptionAtMost();
            exceptions += processHeap.allocations;
            largestBytes = std::max(largestBytes, processHeap.largestBytes);
            ++calls;
        }
    EXPECT_GT(calls, 100U);
    EXPECT_GT(exceptions, 10U) << "the count works";
    std::printf("outside: %zu bytes at most\n", largestBytes);
}

TEST(OutsideMemory, AnAllocatorThatFailsIsOneExceptionToo) {
    for (const auto& every : test::callsOfAllKinds()) {
        const test::NamedCall& call = every->calls.front();
        SCOPED_TRACE(call.name);
        tesk_options options = TESK_OPTIONS_INIT;
        options.max_memory_bytes = 1;
        options.flags = TESK_PLAIN;
        const test::Codec limited = test::makeCodec(&options);
        EXPECT_EQ(watched(call, limited.get()), TESK_LIMIT_EXCEEDED);
        expectOneExceptionAtMost();
    }
}

/// Returns: how many prefixes of a stream are cut.
int measureEveryPrefix(const test::Bytes& stream) {
    int cut = 0;
    std::size_t length = 0;
    for (std::size_t size = 0; size <= stream.size(); ++size)
        if (tesk_measure(stream.data(), size, &length) == TESK_CUT) ++cut;
    return cut;
}

TEST(OutsideMemory, CallsWithoutACodecTakeNone) {
    const test::Codec codec = test::makeCodec();
    for (const int bytes : {1, 2, 3}) {
        const test::RawImage image = test::makeImage(test::Content::photo, bytes, 8, 40, 30);
        const tesk_image geometry = test::geometryOf(image);
        const test::Bytes stream = test::compressCall(codec.get(), image).bytes;
        test::Bytes damaged = stream;
        damaged[stream.size() / 2] ^= 0xFF;
        processHeap = {};
        processHeap.isWatched = true;
        std::uint32_t used = 0;
        const int cut = measureEveryPrefix(stream) + measureEveryPrefix(damaged);
        const tesk_status status = tesk_used_bits(&geometry, image.bytes.data(), 0, &used);
        const std::size_t sizes = tesk_compress_bound(&geometry) + tesk_raw_bytes(&geometry);
        processHeap.isWatched = false;
        EXPECT_EQ(processHeap.allocations, 0U);
        EXPECT_GT(cut, 400);
        EXPECT_EQ(status, TESK_OK);
        EXPECT_GT(sizes, image.bytes.size());
    }
}

/// The runtime keeps some memory for exceptions: where malloc has no more, calls answer all the same, unless they
/// need memory for anything else.
TEST(OutsideMemory, MayBeRefused) {
    for (const auto& every : test::callsOfAllKinds())
        for (const test::NamedCall& call : every->calls) {
            SCOPED_TRACE(call.name);
            Arena arena;
            const tesk_options options = arena.options();
            const test::Codec codec = test::makeCodec(&options);
            processHeap = {};
            processHeap.failFrom = 0;
            processHeap.isWatched = true;
            const tesk_status status = call.make(codec.get());
            processHeap.isWatched = false;
            EXPECT_EQ(status, call.expected);
            EXPECT_EQ(processHeap.live, 0);
        }
}

}  // namespace
