#include <gtest/gtest.h>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/LibraryCodec.h"

// What both calls that compress refuse.

namespace {

using test::Bytes;
using test::RawImage;

class TeskCompressArguments : public testing::Test {
protected:
    /// Checks that both calls answer the same, and that they touch neither buffer nor result.
    void expectRefusal(tesk_status expected, const tesk_image* shape, const void* pixels,
                       tesk_codec* with) {
        Bytes out(4096, 0xA5);
        tesk_result result = TESK_RESULT_INIT;
        result.stream_bytes = 77;
        EXPECT_EQ(tesk_compress(with, shape, pixels, 0, 0, out.data(), out.size(), &result),
                  expected);
        EXPECT_EQ(out, Bytes(4096, 0xA5));
        void* block = out.data();
        EXPECT_EQ(tesk_compress_to_block(with, shape, pixels, 0, 0, &block, &result), expected);
        EXPECT_EQ(block, nullptr);
    }
    tesk_image withFormat(unsigned bytes, unsigned bits) const {
        tesk_image other = geometry;
        other.bytes_per_pixel = bytes;
        other.bits_per_pixel = bits;
        return other;
    }

    test::Codec codec = test::makeCodecWithFlags(TESK_PLAIN);
    RawImage image = test::makeImage(test::Content::noise, 3, 8, 20, 20);
    tesk_image geometry = test::geometryOf(image);
};

TEST_F(TeskCompressArguments, NullPointersAreInvalid) {
    const void* pixels = image.bytes.data();
    expectRefusal(TESK_INVALID_ARGUMENT, &geometry, pixels, nullptr);
    expectRefusal(TESK_INVALID_ARGUMENT, nullptr, pixels, codec.get());
    expectRefusal(TESK_INVALID_ARGUMENT, &geometry, nullptr, codec.get());
    EXPECT_EQ(tesk_compress_to_block(codec.get(), &geometry, pixels, 0, 0, nullptr, nullptr),
              TESK_INVALID_ARGUMENT);
}

TEST_F(TeskCompressArguments, ANullBufferHasNoRoomWhateverItsSize) {
    for (const std::size_t size : {std::size_t{0}, std::size_t{1} << 40}) {
        tesk_result result = TESK_RESULT_INIT;
        EXPECT_EQ(
            tesk_compress(codec.get(), &geometry, image.bytes.data(), 0, 0, nullptr, size, &result),
            TESK_BUFFER_TOO_SMALL);
        EXPECT_EQ(result.stream_bytes, test::encode(image).size());
    }
}

TEST_F(TeskCompressArguments, UnknownResultsAreLeftAlone) {
    for (const std::size_t size : {std::size_t{0}, sizeof(tesk_result) - 1, std::size_t{4097}}) {
        tesk_result result{size, 5, 6, TESK_LOSS_NONE, 7};
        void* block = &result;
        EXPECT_EQ(tesk_compress_to_block(codec.get(), &geometry, image.bytes.data(), 0, 0, &block,
                                         &result),
                  TESK_INVALID_ARGUMENT);
        EXPECT_EQ(block, nullptr);
        EXPECT_EQ(result.stream_bytes, 5U);
        EXPECT_EQ(result.peak_memory_bytes, 6U);
        EXPECT_EQ(result.rescue, 7U);
    }
}

TEST_F(TeskCompressArguments, FormatsThatNoStreamHoldsAreUnsupported) {
    constexpr unsigned kFormats[][2] = {{0, 8},  {4, 8},   {255, 8}, {257, 8}, {1, 0},
                                        {1, 9},  {3, 0},   {3, 9},   {3, 24},  {2, 0},
                                        {2, 17}, {2, 256}, {1, 264}, {~0U, 8}, {1, ~0U}};
    for (const auto& [bytes, bits] : kFormats) {
        SCOPED_TRACE(testing::Message() << bytes << " bytes, " << bits << " bits");
        const tesk_image other = withFormat(bytes, bits);
        expectRefusal(TESK_UNSUPPORTED_FORMAT, &other, image.bytes.data(), codec.get());
    }
}

TEST_F(TeskCompressArguments, EveryNumberOfBitsThatASampleHasIsSupported) {
    for (unsigned bytes = 1; bytes <= 3; ++bytes)
        for (unsigned bits = 1; bits <= (bytes == 2 ? 16U : 8U); ++bits) {
            const tesk_image other = withFormat(bytes, bits);
            void* block = nullptr;
            EXPECT_EQ(tesk_compress_to_block(codec.get(), &other, image.bytes.data(), 0, 0, &block,
                                             nullptr),
                      TESK_OK);
            ASSERT_NE(block, nullptr);
            EXPECT_EQ(static_cast<unsigned char*>(block)[4], bytes);
            EXPECT_EQ(static_cast<unsigned char*>(block)[5], bits);
            tesk_release_block(codec.get(), block);
        }
}

TEST_F(TeskCompressArguments, SidesThatNoHeaderHoldsAreUnsupported) {
    for (const std::uint32_t side : {65536U, 65537U, ~0U}) {
        tesk_image other = geometry;
        other.width = side;
        expectRefusal(TESK_UNSUPPORTED_FORMAT, &other, image.bytes.data(), codec.get());
        other = geometry;
        other.height = side;
        expectRefusal(TESK_UNSUPPORTED_FORMAT, &other, image.bytes.data(), codec.get());
        other.width = 0;
        expectRefusal(TESK_UNSUPPORTED_FORMAT, &other, nullptr, codec.get());
    }
}

TEST_F(TeskCompressArguments, TheCodecWorksAfterAnyRefusal) {
    const tesk_image other = withFormat(4, 8);
    expectRefusal(TESK_UNSUPPORTED_FORMAT, &other, image.bytes.data(), codec.get());
    EXPECT_EQ(test::compressCall(codec.get(), image).status, TESK_OK);
}

}  // namespace
