#include <gtest/gtest.h>
#include <limits>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

namespace {

using test::Bytes;
using test::Call;
using test::compressCall;
using test::Content;
using test::geometryOf;
using test::RawImage;
using test::sameBytes;

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kMostDistance = std::numeric_limits<std::ptrdiff_t>::max();

class TeskCompress : public testing::Test {
protected:
    /// Compresses pixels with a stride into a buffer that is large enough.
    Call withStride(const RawImage& shape, const void* pixels, std::size_t strideBytes) {
        const tesk_image geometry = geometryOf(shape);
        Call call;
        call.bytes.resize(1 << 16);
        call.status = tesk_compress(codec.get(), &geometry, pixels, strideBytes, 0,
                                    call.bytes.data(), call.bytes.size(), &call.result);
        call.bytes.resize(call.isUsable() ? call.result.stream_bytes : 0);
        return call;
    }

    test::Codec codec = test::makeCodec();
    test::Codec plainCodec = test::makeCodecWithFlags(TESK_PLAIN);
    RawImage image = test::makeImage(Content::noise, 1, 8, 20, 20);
    Bytes complete = test::compressObject(image).bytes;
};

TEST_F(TeskCompress, PlainStreamsAreThoseOfTheCompressor) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 16}})
        for (int width = 0; width <= 20; width += 3)
            for (int height = 0; height <= 21; ++height) {
                const RawImage photo = test::makeImage(Content::photo, kind.bytesPerPixel,
                                                       kind.bitsPerPixel, width, height);
                SCOPED_TRACE(testing::Message() << width << " x " << height);
                const Call call = compressCall(plainCodec.get(), photo);
                EXPECT_EQ(call.status, TESK_OK);
                EXPECT_TRUE(sameBytes(test::compressObject(photo).bytes, call.bytes));
            }
}

TEST_F(TeskCompress, SamplesWiderThanTheHeaderSaysGiveTheBytesOfTheCompressor) {
    for (const int bits : {10, 11, 12}) {
        RawImage wide = test::makeImage(Content::noise, 2, 16, 24, 24);
        wide.bitsPerPixel = bits;
        const Call call = compressCall(plainCodec.get(), wide);
        EXPECT_EQ(call.status, TESK_OK);
        EXPECT_TRUE(sameBytes(test::compressObject(wide).bytes, call.bytes));
    }
}

TEST_F(TeskCompress, EveryBudgetIsKeptExactly) {
    for (std::size_t budget = 16; budget <= complete.size() + 3; ++budget) {
        SCOPED_TRACE(budget);
        const Call call = compressCall(codec.get(), image, budget);
        EXPECT_EQ(call.status, budget < complete.size() ? TESK_CUT : TESK_OK);
        const std::size_t expected = std::min(budget, complete.size());
        EXPECT_TRUE(sameBytes(test::prefixOf(complete, expected), call.bytes));
    }
    for (const std::size_t budget : {std::size_t{1} << 62, kMost}) {
        const Call call = compressCall(codec.get(), image, budget);
        EXPECT_EQ(call.status, TESK_OK);
        EXPECT_EQ(call.bytes, complete);
    }
}

TEST_F(TeskCompress, BudgetsBelowTheHeaderAreInvalid) {
    for (std::size_t budget = 1; budget < 16; ++budget)
        EXPECT_EQ(compressCall(codec.get(), image, budget).status, TESK_INVALID_ARGUMENT);
}

TEST_F(TeskCompress, ASmallBufferIsToldTheSizeAndLeftAlone) {
    const tesk_image geometry = geometryOf(image);
    for (const std::size_t budget : {std::size_t{0}, std::size_t{16}, std::size_t{100}}) {
        const std::size_t needed = budget == 0 ? complete.size() : budget;
        const auto call = [&](Bytes& out, std::size_t room, tesk_result& result) {
            return tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, budget, out.data(),
                                 room, &result);
        };
        for (const std::size_t room : {std::size_t{0}, std::size_t{1}, needed / 2, needed - 1}) {
            Bytes out(needed + 8, 0xA5);
            tesk_result result = TESK_RESULT_INIT;
            EXPECT_EQ(call(out, room, result), TESK_BUFFER_TOO_SMALL);
            EXPECT_EQ(result.stream_bytes, needed);
            EXPECT_EQ(out, Bytes(needed + 8, 0xA5));
        }
        Bytes out(needed + 8, 0xA5);
        tesk_result result = TESK_RESULT_INIT;
        EXPECT_EQ(call(out, needed, result), budget == 0 ? TESK_OK : TESK_CUT);
        EXPECT_EQ(result.stream_bytes, needed);
        Bytes expected = test::prefixOf(complete, needed);
        expected.resize(needed + 8, 0xA5);
        EXPECT_TRUE(sameBytes(expected, out));
    }
}

TEST_F(TeskCompress, NoBufferAtAllAsksForTheSize) {
    const tesk_image geometry = geometryOf(image);
    tesk_result result = TESK_RESULT_INIT;
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, nullptr, 0, &result),
              TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(result.stream_bytes, complete.size());
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, nullptr, 0, nullptr),
              TESK_BUFFER_TOO_SMALL);
}

TEST_F(TeskCompress, AResultIsNotNeeded) {
    const tesk_image geometry = geometryOf(image);
    Bytes out(complete.size());
    EXPECT_EQ(tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, out.data(),
                            out.size(), nullptr),
              TESK_OK);
    EXPECT_EQ(out, complete);
    void* block = nullptr;
    EXPECT_EQ(
        tesk_compress_to_block(codec.get(), &geometry, image.bytes.data(), 0, 0, &block, nullptr),
        TESK_OK);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(std::memcmp(block, complete.data(), complete.size()), 0);
    tesk_release_block(codec.get(), block);
}

TEST_F(TeskCompress, GapsAndAddressesDoNotMatter) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 16}}) {
        const RawImage photo =
            test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 15, 11);
        const Bytes expected = test::compressObject(photo).bytes;
        for (std::size_t gap = 0; gap <= 5; ++gap)
            for (std::size_t shift = 0; shift <= 3; ++shift) {
                SCOPED_TRACE(testing::Message() << "gap " << gap << ", address " << shift);
                const Bytes spread = test::spread(photo, test::rowBytesOf(photo) + gap, 0x5A);
                Bytes pixels(shift, 0x77);
                pixels.insert(pixels.end(), spread.begin(), spread.end());
                const Call call =
                    withStride(photo, pixels.data() + shift, test::rowBytesOf(photo) + gap);
                EXPECT_EQ(call.status, TESK_OK);
                EXPECT_TRUE(sameBytes(expected, call.bytes));
            }
    }
}

TEST_F(TeskCompress, StridesBelowARowOrBeyondAllAddressesAreInvalid) {
    const std::size_t tooFar = kMostDistance / 20 + 1;
    for (const std::size_t stride :
         {std::size_t{1}, std::size_t{19}, tooFar, kMostDistance, kMostDistance + 1, kMost})
        EXPECT_EQ(withStride(image, image.bytes.data(), stride).status, TESK_INVALID_ARGUMENT)
            << stride;
    // The only row of an image, which plain streams lose.
    RawImage row = test::makeImage(Content::photo, 1, 8, 20, 1);
    row.bytes.assign(20, 0);
    EXPECT_EQ(withStride(row, row.bytes.data(), kMostDistance).status, TESK_OK);
    EXPECT_EQ(withStride(row, row.bytes.data(), kMostDistance + 1).status, TESK_INVALID_ARGUMENT);
}

TEST_F(TeskCompress, ImagesWithoutPixelsNeedNoneAndTakeAnyStride) {
    for (const auto& [width, height] : {std::pair(0, 0), {0, 9}, {9, 0}, {65535, 0}, {0, 65535}}) {
        const RawImage none = test::makeImage(Content::flat, 3, 8, width, height);
        for (const std::size_t stride : {std::size_t{0}, std::size_t{1}, kMost}) {
            const Call call = withStride(none, nullptr, stride);
            EXPECT_EQ(call.status, TESK_OK);
            EXPECT_EQ(call.bytes, test::encode(none));
        }
    }
}

}  // namespace
