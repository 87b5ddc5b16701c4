// The calls for reduced pictures: arguments, limits, rows that stand apart. What the pictures are:
// ReducedPictures_test.cpp.

#include <gtest/gtest.h>
#include <limits>

#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/CountingHeap.h"

namespace {

using test::Bytes;
using test::Content;
using test::prefixOf;
using test::RawImage;
using test::sameBytes;

tesk_image geometry(std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel = 1,
                    std::uint32_t bitsPerPixel = 8) {
    return {sizeof(tesk_image), width, height, bytesPerPixel, bitsPerPixel};
}

void expectReduced(const tesk_image& image, std::uint32_t levels, std::uint32_t width,
                   std::uint32_t height) {
    tesk_image reduced = geometry(7, 7, 7, 7);
    EXPECT_EQ(tesk_reduced_image(&image, levels, &reduced), TESK_OK);
    EXPECT_EQ(reduced.width, width);
    EXPECT_EQ(reduced.height, height);
    EXPECT_EQ(reduced.bytes_per_pixel, image.bytes_per_pixel);
    EXPECT_EQ(reduced.bits_per_pixel, image.bits_per_pixel);
}

void expectNone(const tesk_image& image, std::uint32_t levels, tesk_status status) {
    tesk_image reduced = geometry(7, 7, 7, 7);
    EXPECT_EQ(tesk_reduced_image(&image, levels, &reduced), status);
    EXPECT_EQ(reduced.width, 7U);
    EXPECT_EQ(reduced.bits_per_pixel, 7U);
}

TEST(TeskReducedImage, SidesAreRoundedUp) {
    expectReduced(geometry(3000, 2000), 3, 375, 250);
    expectReduced(geometry(3001, 2001), 3, 376, 251);
    expectReduced(geometry(65535, 64, 3), 5, 2048, 2);
    expectReduced(geometry(65535, 65535, 2, 16), 1, 32768, 32768);
    expectReduced(geometry(63, 200, 2, 9), 4, 4, 13);
    expectReduced(geometry(4, 5), 1, 2, 3);
}

TEST(TeskReducedImage, ThereAreAsManyLevelsAsTheShorterSideHas) {
    for (const auto& [side, levels] : {std::pair{0U, 0U},
                                       {1U, 0U},
                                       {2U, 0U},
                                       {3U, 0U},
                                       {4U, 1U},
                                       {7U, 1U},
                                       {8U, 2U},
                                       {15U, 2U},
                                       {16U, 3U},
                                       {31U, 3U},
                                       {32U, 4U},
                                       {63U, 4U},
                                       {64U, 5U},
                                       {65535U, 5U}}) {
        for (const tesk_image& image : {geometry(side, 65535), geometry(65535, side)}) {
            expectReduced(image, 0, image.width, image.height);
            for (std::uint32_t k = 1; k <= levels; ++k)
                expectReduced(image, k, (image.width + (1U << k) - 1) >> k,
                              (image.height + (1U << k) - 1) >> k);
            for (const std::uint32_t k : {levels + 1, 31U, 32U, 64U, 0xFFFFFFFFU})
                expectNone(image, k, TESK_UNSUPPORTED_FORMAT);
        }
    }
}

TEST(TeskReducedImage, BitsAreCopiedAndImagesThatNoStreamHoldsAreRefused) {
    for (const std::uint32_t bits : {0U, 17U, 0xFFFFFFFFU})
        expectReduced(geometry(64, 64, 1, bits), 1, 32, 32);
    for (const tesk_image& image :
         {geometry(65536, 9), geometry(9, 65536), geometry(0xFFFFFFFF, 0xFFFFFFFF),
          geometry(9, 9, 0), geometry(9, 9, 4)})
        expectNone(image, 0, TESK_UNSUPPORTED_FORMAT);
}

TEST(TeskReducedImage, BothMayBeTheSameStruct) {
    tesk_image image = geometry(35, 33, 3);
    EXPECT_EQ(tesk_reduced_image(&image, 1, &image), TESK_OK);
    EXPECT_EQ(image.width, 18U);
    EXPECT_EQ(image.height, 17U);
    EXPECT_EQ(image.bytes_per_pixel, 3U);
}

TEST(TeskReducedImage, NullPointersAndUnknownStructsAreInvalid) {
    const tesk_image image = geometry(64, 64);
    tesk_image reduced = TESK_IMAGE_INIT;
    EXPECT_EQ(tesk_reduced_image(nullptr, 1, &reduced), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_reduced_image(&image, 1, nullptr), TESK_INVALID_ARGUMENT);
    struct {
        tesk_image known = geometry(64, 64);
        unsigned char later[8] = {};
    } longer;
    for (const std::size_t size : {std::size_t{0}, sizeof(tesk_image) - 1, std::size_t{4097}}) {
        longer.known.struct_bytes = size;
        EXPECT_EQ(tesk_reduced_image(&longer.known, 1, &reduced), TESK_INVALID_ARGUMENT);
        EXPECT_EQ(tesk_reduced_image(&image, 1, &longer.known), TESK_INVALID_ARGUMENT);
    }
    longer.known.struct_bytes = sizeof longer;
    EXPECT_EQ(tesk_reduced_image(&longer.known, 1, &reduced), TESK_OK);
    longer.later[7] = 9;
    EXPECT_EQ(tesk_reduced_image(&longer.known, 1, &reduced), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_reduced_image(&image, 1, &longer.known), TESK_OK);
    EXPECT_EQ(longer.later[7], 9);
}

class TeskReduced : public testing::Test {
protected:
    tesk_status into(tesk_codec* with, Bytes& out, std::size_t shift, std::size_t outBytes,
                     std::size_t stride) {
        return tesk_decompress_reduced(with, stream.data(), stream.size(), 2, out.data() + shift,
                                       outBytes, stride, nullptr);
    }
    void take(const RawImage& other) {
        image = other;
        stream = test::encode(image);
    }

    test::Codec codec = test::makeCodec();
    /// 9 x 8 pixels at 1 : 4.
    RawImage image = test::makeImage(Content::photo, 1, 8, 35, 30);
    Bytes stream = test::encode(image);
};

TEST_F(TeskReduced, NoLevelsAreTheWholeImage) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 16}})
        for (const auto& [width, height] : {std::pair{0, 5}, {1, 9}, {3, 20}, {14, 12}}) {
            take(test::makeImage(Content::noise, kind.bytesPerPixel, kind.bitsPerPixel, width,
                                 height));
            for (std::size_t size = 0; size <= stream.size(); ++size) {
                const Bytes prefix = prefixOf(stream, size);
                const test::Call whole = test::decompressCall(codec.get(), prefix);
                const test::Call call = test::reduceCall(codec.get(), prefix, 0);
                ASSERT_EQ(call.status, whole.status) << size;
                ASSERT_TRUE(sameBytes(whole.bytes, call.bytes)) << size;
                EXPECT_EQ(call.result.peak_memory_bytes, whole.result.peak_memory_bytes);
            }
        }
}

TEST_F(TeskReduced, GapsStayAsTheyAreAtAnyAddress) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 16}}) {
        take(test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 35, 30));
        const RawImage picture{kind.bytesPerPixel, kind.bitsPerPixel, 9, 8,
                               test::reduceCall(codec.get(), stream, 2).bytes};
        for (std::size_t gap = 0; gap <= 5; ++gap)
            for (std::size_t shift = 1; shift <= 4; ++shift) {
                SCOPED_TRACE(testing::Message() << "gap " << gap << ", address " << shift);
                const std::size_t stride = test::rowBytesOf(picture) + gap;
                Bytes expected = test::spread(picture, stride, 0xA5);
                const std::size_t extent = expected.size();
                expected.insert(expected.begin(), shift, 0xA5);
                expected.resize(expected.size() + 9, 0xA5);
                Bytes out(expected.size(), 0xA5);
                EXPECT_EQ(into(codec.get(), out, shift, extent - 1, stride), TESK_BUFFER_TOO_SMALL);
                EXPECT_EQ(into(codec.get(), out, shift, extent, stride - gap - 1),
                          TESK_INVALID_ARGUMENT);
                EXPECT_EQ(out, Bytes(expected.size(), 0xA5));
                EXPECT_EQ(into(codec.get(), out, shift, extent, stride), TESK_OK);
                EXPECT_TRUE(sameBytes(expected, out));
            }
    }
}

TEST_F(TeskReduced, TooManyLevelsAreRefused) {
    Bytes out(image.bytes.size(), 0xA5);
    const auto status = [&](std::uint32_t levels) {
        return tesk_decompress_reduced(codec.get(), stream.data(), stream.size(), levels,
                                       out.data(), out.size(), 0, nullptr);
    };
    for (const std::uint32_t levels : {4U, 5U, 31U, 32U, 33U, 256U, 0x80000000U, 0xFFFFFFFFU})
        EXPECT_EQ(status(levels), TESK_UNSUPPORTED_FORMAT) << levels;
    for (const auto& [width, height] : {std::pair{0, 0}, {0, 40}, {40, 0}, {1, 40}, {40, 3}}) {
        take(test::makeImage(Content::noise, 1, 8, width, height));
        EXPECT_EQ(status(1), TESK_UNSUPPORTED_FORMAT);
    }
    EXPECT_EQ(out, Bytes(out.size(), 0xA5));
}

TEST_F(TeskReduced, NullPointersUnknownStructsAndDamageAreAnswered) {
    Bytes out(256, 0xA5);
    const auto reduce = [&](tesk_codec* with, const void* bytes, void* to, tesk_result* result) {
        return tesk_decompress_reduced(with, bytes, stream.size(), 1, to, out.size(), 0, result);
    };
    EXPECT_EQ(reduce(nullptr, stream.data(), out.data(), nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(reduce(codec.get(), nullptr, out.data(), nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(reduce(codec.get(), stream.data(), nullptr, nullptr), TESK_INVALID_ARGUMENT);
    tesk_result tooShort{sizeof(tesk_result) - 1, 5, 6, TESK_LOSS_NONE, 0};
    EXPECT_EQ(reduce(codec.get(), stream.data(), out.data(), &tooShort), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(test::reduceCall(codec.get(), prefixOf(stream, 15), 1).status, TESK_INVALID_STREAM);
    stream[17] = 0x3D;  // plane 1 of one
    EXPECT_EQ(reduce(codec.get(), stream.data(), out.data(), nullptr), TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(test::reduceCall(codec.get(), stream, 1).status, TESK_INVALID_STREAM);
    stream[4] = 4;
    EXPECT_EQ(reduce(codec.get(), stream.data(), out.data(), nullptr), TESK_UNSUPPORTED_FORMAT);
    stream[0] = '?';
    EXPECT_EQ(reduce(codec.get(), stream.data(), out.data(), nullptr), TESK_INVALID_STREAM);
    EXPECT_EQ(out, Bytes(256, 0xA5));
}

TEST_F(TeskReduced, TheLargestPictureIsCountedInItsOwnPixels) {
    const auto statusWithin = [&](std::size_t maxPixels) {
        tesk_options options = TESK_OPTIONS_INIT;
        options.max_pixels = maxPixels;
        return test::reduceCall(test::makeCodec(&options).get(), stream, 2).status;
    };
    EXPECT_EQ(statusWithin(72), TESK_OK);
    EXPECT_EQ(statusWithin(71), TESK_LIMIT_EXCEEDED);
}

TEST_F(TeskReduced, AStoppedCodecReducesNothing) {
    tesk_stop(codec.get());
    EXPECT_EQ(test::reduceCall(codec.get(), stream, 2).status, TESK_STOPPED);
    tesk_clear_stop(codec.get());
    EXPECT_EQ(test::reduceCall(codec.get(), stream, 2).status, TESK_OK);
}

TEST_F(TeskReduced, EveryFurtherLevelTakesLessMemory) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 11}, {2, 16}})
        for (const auto& [width, height] : {std::pair{64, 64}, {300, 200}, {1000, 90}}) {
            take(test::makeImage(Content::noise, kind.bytesPerPixel, kind.bitsPerPixel, width,
                                 height));
            std::size_t before = std::numeric_limits<std::size_t>::max();
            for (std::uint32_t k = 0; k <= 5; ++k) {
                const test::Call call = test::reduceCall(codec.get(), stream, k);
                EXPECT_LT(call.result.peak_memory_bytes, before) << k;
                before = call.result.peak_memory_bytes;
            }
        }
}

/// As much memory as it tells, and not a byte less.
TEST_F(TeskReduced, AMemoryLimitIsKept) {
    take(test::makeImage(Content::noise, 3, 8, 140, 130));
    for (std::uint32_t k = 1; k <= 5; ++k) {
        const test::Call free = test::reduceCall(codec.get(), stream, k);
        const std::size_t peak = free.result.peak_memory_bytes;
        const auto within = [&](std::size_t limit) {
            tesk_options options = TESK_OPTIONS_INIT;
            options.max_memory_bytes = limit;
            return test::reduceCall(test::makeCodec(&options).get(), stream, k);
        };
        EXPECT_TRUE(sameBytes(free.bytes, within(peak).bytes));
        for (std::size_t limit = 1; limit < peak; limit += 1 + peak / 50) {
            const test::Call call = within(limit);
            EXPECT_EQ(call.status, TESK_LIMIT_EXCEEDED) << limit;
            EXPECT_LE(call.result.peak_memory_bytes, limit);
        }
        EXPECT_EQ(within(peak - 1).status, TESK_LIMIT_EXCEEDED);
    }
}

TEST_F(TeskReduced, AnImageThatCannotFitIsRefusedBeforeAnyAllocation) {
    const Bytes hostile = test::headed(qmx::makeHeader(2, 16, 65535, 65535), {8, 1, 2, 3});
    test::CountingHeap heap;
    tesk_options options = heap.options();
    options.max_memory_bytes = 4 * 2048 * 4 - 1;
    const test::Codec small = test::makeCodec(&options);
    heap.restart();
    unsigned char pixel = 0xA5;
    // The buffer is a lie that nobody may come to.
    EXPECT_EQ(tesk_decompress_reduced(small.get(), hostile.data(), hostile.size(), 5, &pixel,
                                      std::size_t{1} << 40, 0, nullptr),
              TESK_LIMIT_EXCEEDED);
    EXPECT_EQ(heap.calls, 0U);
    EXPECT_EQ(pixel, 0xA5);
}

}  // namespace
