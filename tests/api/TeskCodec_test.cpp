#include <cstring>
#include <gtest/gtest.h>
#include <set>
#include <string>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CountingHeap.h"

// Creation, probe, version, messages, stop.

namespace {

using test::Bytes;
using test::RawImage;

TEST(TeskVersion, IsTheTextOfTheMacros) {
    EXPECT_EQ(tesk_version(), std::to_string(TESK_VERSION_MAJOR) + '.' +
                                  std::to_string(TESK_VERSION_MINOR) + '.' +
                                  std::to_string(TESK_VERSION_PATCH));
}

TEST(TeskMessages, AreDistinctAndNeverNull) {
    std::set<std::string> messages;
    for (int status = TESK_OK; status <= TESK_INVALID_ARGUMENT; ++status) {
        ASSERT_NE(tesk_status_message(status), nullptr);
        messages.insert(tesk_status_message(status));
    }
    EXPECT_EQ(messages.size(), 9U);
    EXPECT_EQ(messages.count(""), 0U);
    for (const int status : {-1, 9, 128, std::numeric_limits<int>::min()}) {
        ASSERT_NE(tesk_status_message(status), nullptr);
        EXPECT_EQ(messages.count(tesk_status_message(status)), 0U);
    }
}

TEST(TeskMessages, OfAnUnsupportedFormatSayWhichThereAreAndWhatBitsCount) {
    const std::string message = tesk_status_message(TESK_UNSUPPORTED_FORMAT);
    for (const char* words : {"8-bit gray", "16-bit gray", "8-bit R, G, B", "65535", "not 24"})
        EXPECT_NE(message.find(words), std::string::npos) << words;
    EXPECT_EQ(message.find('\n'), std::string::npos);
}

TEST(TeskMessages, OfACutStreamHoldForBothDirections) {
    const std::string message = tesk_status_message(TESK_CUT);
    for (const char* words : {"not complete", "cut at the budget", "ended early"})
        EXPECT_NE(message.find(words), std::string::npos) << words;
}

TEST(TeskMessages, NoLossPromisesNothing) {
    // The result of a call that came to nothing holds it, too.
    EXPECT_STREQ(tesk_loss_message(TESK_LOSS_NONE), "no loss");
}

TEST(TeskNumbers, StayAsTheyAre) {
    const int numbers[] = {TESK_OK,
                           TESK_CUT,
                           TESK_STOPPED,
                           TESK_INVALID_STREAM,
                           TESK_UNSUPPORTED_FORMAT,
                           TESK_LIMIT_EXCEEDED,
                           TESK_OUT_OF_MEMORY,
                           TESK_BUFFER_TOO_SMALL,
                           TESK_INVALID_ARGUMENT};
    for (int i = 0; i < 9; ++i)
        EXPECT_EQ(numbers[i], i);
}

TEST(TeskProbe, TellsTheGeometryOfAHeader) {
    const Bytes stream = test::headed(qmx::makeHeader(2, 13, 640, 65535), {});
    tesk_image image = TESK_IMAGE_INIT;
    EXPECT_EQ(tesk_probe(stream.data(), 16, &image), TESK_OK);
    EXPECT_EQ(image.struct_bytes, sizeof image);
    EXPECT_EQ(image.width, 640U);
    EXPECT_EQ(image.height, 65535U);
    EXPECT_EQ(image.bytes_per_pixel, 2U);
    EXPECT_EQ(image.bits_per_pixel, 13U);
}

TEST(TeskProbe, TellsTheGeometryOfUnsupportedFormatsToo) {
    for (const int bytes : {0, 4, 255}) {
        const Bytes stream = test::headed(qmx::makeHeader(bytes, 200, 3, 4), {});
        tesk_image image = TESK_IMAGE_INIT;
        EXPECT_EQ(tesk_probe(stream.data(), 16, &image), TESK_UNSUPPORTED_FORMAT);
        EXPECT_EQ(image.bytes_per_pixel, static_cast<unsigned>(bytes));
        EXPECT_EQ(image.bits_per_pixel, 200U);
        EXPECT_EQ(image.width, 3U);
        EXPECT_EQ(image.height, 4U);
    }
}

TEST(TeskProbe, LeavesTheGeometryAloneWhereThereIsNone) {
    Bytes stream = test::headed(qmx::makeHeader(1, 8, 3, 4), {1, 2, 3});
    tesk_image image{sizeof(tesk_image), 1, 2, 3, 4};
    for (std::size_t size = 0; size < 16; ++size)
        EXPECT_EQ(tesk_probe(stream.data(), size, &image), TESK_INVALID_STREAM);
    stream[3] = '1';
    EXPECT_EQ(tesk_probe(stream.data(), stream.size(), &image), TESK_INVALID_STREAM);
    EXPECT_EQ(tesk_probe(nullptr, 16, &image), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_probe(stream.data(), 16, nullptr), TESK_INVALID_ARGUMENT);
    image.struct_bytes = sizeof image - 1;
    EXPECT_EQ(tesk_probe(stream.data(), 16, &image), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(image.width, 1U);
    EXPECT_EQ(image.bits_per_pixel, 4U);
}

TEST(TeskCreate, TakesNoOptions) {
    const test::Codec plain = test::makeCodec();
    EXPECT_NE(plain, nullptr);
    tesk_destroy(nullptr);
    tesk_release_block(plain.get(), nullptr);
}

TEST(TeskCreate, RefusesHalfTheHooksAndUnknownStructSizes) {
    test::CountingHeap heap;
    const tesk_options good = heap.options();
    std::vector<tesk_options> wrong(4, good);
    wrong[0].allocate = nullptr;
    wrong[1].release = nullptr;
    wrong[2].struct_bytes = 0;
    wrong[3].struct_bytes = sizeof good - 1;
    for (const tesk_options& options : wrong) {
        int there = 0;
        auto* codec = reinterpret_cast<tesk_codec*>(&there);
        EXPECT_EQ(tesk_create(&options, &codec), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(codec, nullptr);
    }
    EXPECT_EQ(tesk_create(&good, nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(heap.calls, 0U);
}

TEST(TeskCreate, ReportsWhenThereIsNoMemory) {
    test::CountingHeap heap;
    heap.failAt = 0;
    const tesk_options options = heap.options();
    tesk_codec* codec = nullptr;
    EXPECT_EQ(tesk_create(&options, &codec), TESK_OUT_OF_MEMORY);
    EXPECT_EQ(codec, nullptr);
    EXPECT_EQ(heap.calls, 1U);
}

TEST(TeskCreate, OptionsAreCopied) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.max_pixels = 100;
    const test::Codec codec = test::makeCodec(&options);
    options.max_pixels = 0;
    const RawImage image = test::makeImage(test::Content::photo, 1, 8, 11, 11);
    EXPECT_EQ(test::compressCall(codec.get(), image).status, TESK_LIMIT_EXCEEDED);
}

TEST(TeskStop, HoldsForAllCallsUntilItIsCleared) {
    const RawImage image = test::makeImage(test::Content::noise, 3, 8, 11, 11);
    const Bytes stream = test::encode(image);
    const tesk_image geometry = test::geometryOf(image);
    const test::Codec codec = test::makeCodec();
    const test::Codec other = test::makeCodec();
    tesk_stop(codec.get());
    for (int i = 0; i < 2; ++i) {
        const test::Call compressed = test::compressCall(codec.get(), image);
        EXPECT_EQ(compressed.status, TESK_STOPPED);
        EXPECT_EQ(compressed.result.stream_bytes, 0U);
        EXPECT_EQ(compressed.result.peak_memory_bytes, 0U);
        Bytes out(stream.size(), 0xA5);
        EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, out.data(),
                                out.size(), nullptr),
                  TESK_STOPPED);
        EXPECT_EQ(out, Bytes(stream.size(), 0xA5));
        EXPECT_EQ(test::decompressCall(codec.get(), stream).status, TESK_STOPPED);
    }
    EXPECT_EQ(test::decompressCall(other.get(), stream).status, TESK_OK);
    tesk_clear_stop(codec.get());
    EXPECT_EQ(test::compressCall(codec.get(), image).bytes, stream);
    EXPECT_EQ(test::decompressCall(codec.get(), stream).bytes, image.bytes);
}

}  // namespace
