// Row calls of the C interface in every wrong order, and what they leave as it was.

#include <gtest/gtest.h>

#include "support/CountingHeap.h"
#include "support/RowCalls.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::RawImage;

class RowCallOrder : public testing::Test {
protected:
    tesk_status beginIn() { return tesk_compress_begin(codec.get(), &geometry, 0); }
    tesk_status push(std::uint32_t count) {
        const tesk_status status =
            tesk_compress_rows(codec.get(), image.bytes.data() + pushed, 0, count);
        if (status == TESK_OK) pushed += count * test::rowBytesOf(image);
        return status;
    }
    tesk_status endIn() {
        const tesk_status status = tesk_compress_end(codec.get(), &block, nullptr);
        tesk_release_block(codec.get(), block);
        return status;
    }
    tesk_status beginOut() {
        return tesk_decompress_begin(codec.get(), stream.data(), stream.size(), nullptr);
    }
    tesk_status pull(std::uint32_t count) {
        const tesk_status status =
            tesk_decompress_rows(codec.get(), pixels.data() + pulled, 0, count);
        if (status == TESK_OK) pulled += count * test::rowBytesOf(image);
        return status;
    }
    tesk_status endOut() { return tesk_decompress_end(codec.get(), nullptr); }

    /// Makes every call but those that go on with the image that is under way.
    void expectOthersRefused() {
        EXPECT_EQ(beginIn(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(beginOut(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(test::compressCall(codec.get(), image).status, TESK_INVALID_ARGUMENT);
        EXPECT_EQ(test::decompressCall(codec.get(), stream).status, TESK_INVALID_ARGUMENT);
        EXPECT_EQ(test::reduceCall(codec.get(), stream, 1).status, TESK_INVALID_ARGUMENT);
    }
    void expectNothingUnderWay() {
        EXPECT_EQ(push(1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(push(0), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(endIn(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(pull(1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(endOut(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(heap.live.size(), 1U) << "the codec alone";
    }

    RawImage image = test::makeImage(Content::photo, 3, 8, 40, 30);
    tesk_image geometry = test::geometryOf(image);
    test::CountingHeap heap;
    tesk_options options = heap.options();
    test::Codec codec = test::makeCodec(&options);
    Bytes stream = test::compressCall(codec.get(), image).bytes;
    Bytes pixels = Bytes(image.bytes.size());
    std::size_t pushed = 0;
    std::size_t pulled = 0;
    void* block = nullptr;
};

TEST_F(RowCallOrder, WithoutABeginNothingIsUnderWay) {
    expectNothingUnderWay();
}

TEST_F(RowCallOrder, ACompressionGoesOnBehindEveryWrongCall) {
    ASSERT_EQ(beginIn(), TESK_OK);
    for (std::uint32_t r = 0; r < geometry.height; ++r) {
        expectOthersRefused();
        EXPECT_EQ(endIn(), TESK_INVALID_ARGUMENT) << "rows are missing";
        EXPECT_EQ(pull(1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(endOut(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(push(geometry.height - r + 1), TESK_INVALID_ARGUMENT) << "too many";
        EXPECT_EQ(tesk_compress_rows(codec.get(), nullptr, 0, 1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(tesk_compress_rows(codec.get(), image.bytes.data(), 119, 1),
                  TESK_INVALID_ARGUMENT)
            << "a stride below a row";
        EXPECT_EQ(tesk_compress_end(codec.get(), nullptr, nullptr), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(push(0), TESK_OK);
        ASSERT_EQ(push(1), TESK_OK);
    }
    EXPECT_EQ(push(1), TESK_INVALID_ARGUMENT) << "too many";
    expectOthersRefused();
    tesk_result result = TESK_RESULT_INIT;
    result.struct_bytes = 1;
    EXPECT_EQ(tesk_compress_end(codec.get(), &block, &result), TESK_INVALID_ARGUMENT);
    result.struct_bytes = sizeof result;
    ASSERT_EQ(tesk_compress_end(codec.get(), &block, &result), TESK_OK);
    EXPECT_EQ(Bytes(static_cast<unsigned char*>(block),
                    static_cast<unsigned char*>(block) + result.stream_bytes),
              stream);
    tesk_release_block(codec.get(), block);
    expectNothingUnderWay();
}

TEST_F(RowCallOrder, ADecompressionGoesOnBehindEveryWrongCall) {
    ASSERT_EQ(beginOut(), TESK_OK);
    for (std::uint32_t r = 0; r < geometry.height; ++r) {
        expectOthersRefused();
        EXPECT_EQ(endOut(), TESK_INVALID_ARGUMENT) << "rows are missing";
        EXPECT_EQ(push(1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(endIn(), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(pull(geometry.height - r + 1), TESK_INVALID_ARGUMENT) << "too many";
        EXPECT_EQ(tesk_decompress_rows(codec.get(), nullptr, 0, 1), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(pull(0), TESK_OK);
        ASSERT_EQ(pull(1), TESK_OK);
    }
    EXPECT_EQ(pull(1), TESK_INVALID_ARGUMENT) << "too many";
    expectOthersRefused();
    ASSERT_EQ(endOut(), TESK_OK);
    EXPECT_EQ(pixels, image.bytes);
    expectNothingUnderWay();
}

TEST_F(RowCallOrder, AnAbandonedImageLeavesTheCodecFree) {
    tesk_abandon(nullptr);
    tesk_abandon(codec.get());
    ASSERT_EQ(beginIn(), TESK_OK);
    ASSERT_EQ(push(7), TESK_OK);
    tesk_abandon(codec.get());
    expectNothingUnderWay();
    ASSERT_EQ(beginOut(), TESK_OK);
    ASSERT_EQ(pull(7), TESK_OK);
    tesk_abandon(codec.get());
    expectNothingUnderWay();
    EXPECT_EQ(test::pullCall(codec.get(), test::pushCall(codec.get(), image).bytes).bytes,
              image.bytes);
}

TEST_F(RowCallOrder, ADestroyedCodecGivesEverythingBack) {
    ASSERT_EQ(beginIn(), TESK_OK);
    ASSERT_EQ(push(7), TESK_OK);
    codec = test::makeCodec(&options);
    ASSERT_EQ(beginOut(), TESK_OK);
    ASSERT_EQ(pull(7), TESK_OK);
    codec.reset();
    EXPECT_TRUE(heap.live.empty());
}

TEST_F(RowCallOrder, AStopEndsTheImageAtEveryRow) {
    for (std::uint32_t rows = 0; rows <= geometry.height; ++rows) {
        pushed = pulled = 0;
        ASSERT_EQ(beginIn(), TESK_OK);
        ASSERT_EQ(push(rows), TESK_OK);
        tesk_stop(codec.get());
        EXPECT_EQ(rows < geometry.height ? push(1) : endIn(), TESK_STOPPED);
        tesk_clear_stop(codec.get());
        expectNothingUnderWay();
        ASSERT_EQ(beginOut(), TESK_OK);
        ASSERT_EQ(pull(rows), TESK_OK);
        tesk_stop(codec.get());
        EXPECT_EQ(rows < geometry.height ? pull(1) : endOut(), TESK_STOPPED);
        EXPECT_EQ(beginOut(), TESK_STOPPED);
        EXPECT_EQ(beginIn(), TESK_STOPPED);
        tesk_clear_stop(codec.get());
        expectNothingUnderWay();
    }
}

TEST_F(RowCallOrder, AStopEndsACallOfManyRowsAndOneOfNone) {
    // Noise: sections grow with every row, so that the stop comes in the middle of the call.
    image = test::makeImage(Content::noise, 3, 8, 600, 450);
    geometry = test::geometryOf(image);
    ASSERT_EQ(beginIn(), TESK_OK);
    heap.stopped = codec.get();
    heap.restart();
    heap.stopAt = 3;
    EXPECT_EQ(push(geometry.height), TESK_STOPPED);
    EXPECT_LE(heap.calls, 100U) << "the rest of the call was not run";
    heap.stopAt = test::CountingHeap::kNever;
    tesk_clear_stop(codec.get());
    heap.restart();
    ASSERT_EQ(beginIn(), TESK_OK);
    ASSERT_EQ(push(geometry.height), TESK_OK);
    EXPECT_GT(heap.calls, 300U) << "the whole call allocates far more";
    tesk_stop(codec.get());
    EXPECT_EQ(push(0), TESK_STOPPED);
    tesk_clear_stop(codec.get());
    expectNothingUnderWay();
}

TEST_F(RowCallOrder, ABeginWithoutRoomForAFewRowsAllocatesNothing) {
    options.max_memory_bytes = 100;
    codec = test::makeCodec(&options);
    heap.restart();
    EXPECT_EQ(beginIn(), TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(beginOut(), TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(heap.calls, 0U);
}

TEST_F(RowCallOrder, TheEndOfADecompressionFillsItsResult) {
    ASSERT_EQ(beginOut(), TESK_OK);
    ASSERT_EQ(pull(geometry.height), TESK_OK);
    tesk_result result = TESK_RESULT_INIT;
    result.struct_bytes = 1;
    EXPECT_EQ(tesk_decompress_end(codec.get(), &result), TESK_INVALID_ARGUMENT);
    result = {sizeof result, 7, 7, TESK_LOSS_UNKNOWN, 7};
    ASSERT_EQ(tesk_decompress_end(codec.get(), &result), TESK_OK);
    EXPECT_EQ(result.stream_bytes, 0U);
    EXPECT_EQ(result.loss, TESK_LOSS_NONE);
    EXPECT_EQ(result.rescue, 0U);
    EXPECT_GT(result.peak_memory_bytes, 1000U);
}

TEST_F(RowCallOrder, ABeginThatIsRefusedLeavesTheCodecFree) {
    EXPECT_EQ(tesk_compress_begin(nullptr, &geometry, 0), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_compress_begin(codec.get(), nullptr, 0), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_compress_begin(codec.get(), &geometry, 15), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_decompress_begin(codec.get(), nullptr, 16, nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_decompress_begin(codec.get(), "no stream, but long", 19, nullptr),
              TESK_INVALID_STREAM);
    stream[4] = 7;
    tesk_image probed = TESK_IMAGE_INIT;
    EXPECT_EQ(tesk_decompress_begin(codec.get(), stream.data(), stream.size(), &probed),
              TESK_UNSUPPORTED_FORMAT);
    EXPECT_EQ(probed.bytes_per_pixel, 7U) << "as tesk_probe";
    geometry.width = 70000;
    EXPECT_EQ(beginIn(), TESK_UNSUPPORTED_FORMAT);
    expectNothingUnderWay();
}

TEST_F(RowCallOrder, ALimitOfPixelsHoldsForRows) {
    options.max_pixels = 40 * 30 - 1;
    codec = test::makeCodec(&options);
    EXPECT_EQ(beginIn(), TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(beginOut(), TESK_LIMIT_EXCEEDED);
    expectNothingUnderWay();
}

}  // namespace
