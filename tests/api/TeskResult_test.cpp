#include <gtest/gtest.h>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/CountingHeap.h"

// What tesk_result says after calls that did not succeed.

namespace {

using test::Bytes;
using test::RawImage;

class TeskResult : public testing::Test {
protected:
    test::CountingHeap heap;
    RawImage image = test::makeImage(test::Content::noise, 1, 8, 24, 24);
    tesk_image geometry = test::geometryOf(image);
};

TEST_F(TeskResult, ABlockThatCannotBeHadLeavesNoStream) {
    const tesk_options options = heap.options();
    const test::Codec codec = test::makeCodec(&options);
    heap.restart();
    ASSERT_EQ(test::compressCall(codec.get(), image).status, TESK_OK);
    heap.failAt = heap.calls - 1;
    heap.restart();
    const test::Call call = test::compressCall(codec.get(), image);
    EXPECT_EQ(call.status, TESK_OUT_OF_MEMORY);
    EXPECT_EQ(call.result.stream_bytes, 0U) << "nothing was written";
}

TEST_F(TeskResult, ABlockBeyondTheLimitLeavesNoStream) {
    image = test::makeImage(test::Content::noise, 3, 8, 120, 100);
    const test::Codec free = test::makeCodec();
    const test::Call good = test::compressCall(free.get(), image);
    tesk_options options = TESK_OPTIONS_INIT;
    options.max_memory_bytes = good.result.peak_memory_bytes - 1;
    const test::Codec limited = test::makeCodec(&options);
    const test::Call call = test::compressCall(limited.get(), image);
    EXPECT_EQ(call.status, TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(call.result.stream_bytes, 0U) << "nothing was written";
}

TEST_F(TeskResult, DecompressionToASmallBufferForgetsEarlierCalls) {
    const test::Codec codec = test::makeCodec();
    test::Call call = test::compressCall(codec.get(), image);
    const Bytes stream = call.bytes;
    Bytes out(image.bytes.size());
    EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), out.data(), out.size() - 1,
                              0, &call.result),
              TESK_BUFFER_TOO_SMALL);
    EXPECT_TRUE(call.result.stream_bytes == 0 || call.result.stream_bytes == out.size())
        << "neither the bytes that are needed nor 0, but " << call.result.stream_bytes;
    EXPECT_EQ(call.result.peak_memory_bytes, 0U);
}

TEST_F(TeskResult, CompressionOfAnUnsupportedFormatForgetsEarlierCalls) {
    const test::Codec codec = test::makeCodec();
    test::Call call = test::compressCall(codec.get(), image);
    geometry.bits_per_pixel = 9;
    void* block = nullptr;
    EXPECT_EQ(tesk_compress_to_block(codec.get(), &geometry, image.bytes.data(), 0, 0, &block,
                                     &call.result),
              TESK_UNSUPPORTED_FORMAT);
    EXPECT_EQ(call.result.stream_bytes, 0U);
    EXPECT_EQ(call.result.peak_memory_bytes, 0U);
}

TEST_F(TeskResult, AStopComesBeforeASmallBuffer) {
    const test::Codec codec = test::makeCodec();
    const Bytes stream = test::compressCall(codec.get(), image).bytes;
    Bytes out(image.bytes.size());
    tesk_stop(codec.get());
    EXPECT_EQ(
        tesk_decompress(codec.get(), stream.data(), stream.size(), out.data(), 10, 0, nullptr),
        TESK_STOPPED)
        << "all further calls return it";
}

/// Returns: a result whose fields are those of no call.
tesk_result usedResult() {
    return {sizeof(tesk_result), 1, 2, TESK_LOSS_WRAPPED, TESK_RESCUE_WHOLE_WRAPS};
}

void expectCleared(const tesk_result& result) {
    EXPECT_EQ(result.struct_bytes, sizeof result);
    EXPECT_EQ(result.stream_bytes, 0U);
    EXPECT_EQ(result.peak_memory_bytes, 0U);
    EXPECT_EQ(result.loss, TESK_LOSS_NONE);
    EXPECT_EQ(result.rescue, 0U);
}

TEST_F(TeskResult, CallsThatDoNotBeginClearAllFields) {
    const test::Codec codec = test::makeCodec();
    unsigned char out[16] = {};
    void* block = nullptr;
    tesk_result result = usedResult();
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, nullptr, 0, 0, out, sizeof out, &result),
              TESK_INVALID_ARGUMENT);
    expectCleared(result);
    result = usedResult();
    EXPECT_EQ(tesk_compress_to_block(nullptr, &geometry, image.bytes.data(), 0, 0, &block, &result),
              TESK_INVALID_ARGUMENT);
    expectCleared(result);
    result = usedResult();
    EXPECT_EQ(tesk_decompress(codec.get(), out, sizeof out, out, sizeof out, 0, &result),
              TESK_INVALID_STREAM);
    expectCleared(result);
    tesk_stop(codec.get());
    result = usedResult();
    EXPECT_EQ(
        tesk_compress_to_block(codec.get(), &geometry, image.bytes.data(), 0, 0, &block, &result),
        TESK_STOPPED);
    expectCleared(result);
}

TEST_F(TeskResult, DecompressionClearsWhatACompressionSaid) {
    const test::Codec codec = test::makeCodec();
    const Bytes stream = test::compressCall(codec.get(), image).bytes;
    Bytes out(image.bytes.size());
    tesk_result result = usedResult();
    EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), out.data(), out.size(), 0,
                              &result),
              TESK_OK);
    EXPECT_EQ(result.stream_bytes, 0U);
    EXPECT_EQ(result.loss, TESK_LOSS_NONE);
    EXPECT_EQ(result.rescue, 0U);
}

}  // namespace
