#include <gtest/gtest.h>
#include <limits>

#include "api/tesk.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"

namespace {

using test::Bytes;
using test::Call;
using test::Content;
using test::decompressCall;
using test::prefixOf;
using test::RawImage;
using test::sameBytes;

constexpr std::size_t kMost = std::numeric_limits<std::size_t>::max();
constexpr std::size_t kMostDistance = std::numeric_limits<std::ptrdiff_t>::max();

tesk_status statusFor(int objectStatus) {
    if (objectStatus == qmx::kComplete) return TESK_OK;
    return objectStatus == qmx::kCut ? TESK_CUT : TESK_INVALID_STREAM;
}

class TeskDecompress : public testing::Test {
protected:
    void expectAsDecompressor(const Bytes& bytes) {
        const test::Outcome expected = test::decompressObject(bytes);
        Call call = decompressCall(codec.get(), bytes);
        EXPECT_EQ(call.status, statusFor(expected.status));
        EXPECT_TRUE(sameBytes(expected.bytes, call.bytes));
        EXPECT_EQ(call.result.stream_bytes, 0U);
    }
    tesk_status into(Bytes& out, std::size_t shift, std::size_t outBytes, std::size_t stride) {
        return tesk_decompress(codec.get(), stream.data(), stream.size(), out.data() + shift,
                               outBytes, stride, nullptr);
    }
    void take(const RawImage& other) {
        image = other;
        stream = test::compressObject(image).bytes;
    }

    test::Codec codec = test::makeCodec();
    RawImage image = test::makeImage(Content::photo, 1, 8, 16, 16);
    Bytes stream = test::compressObject(image).bytes;
};

TEST_F(TeskDecompress, EveryPrefixDecodesLikeTheDecompressor) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 12}, {2, 16}}) {
        take(test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 14, 12));
        for (std::size_t size = 17; size <= stream.size(); ++size) {
            SCOPED_TRACE(size);
            expectAsDecompressor(prefixOf(stream, size));
        }
        EXPECT_EQ(decompressCall(codec.get(), stream).bytes, image.bytes);
    }
}

TEST_F(TeskDecompress, TheHeaderAloneIsACutStreamOfZeros) {
    const Call call = decompressCall(codec.get(), prefixOf(stream, 16));
    EXPECT_EQ(call.status, TESK_CUT);
    EXPECT_EQ(call.bytes, Bytes(image.bytes.size(), 0));
}

TEST_F(TeskDecompress, ImagesOfAllSizesDecodeLikeTheDecompressor) {
    for (int width = 0; width <= 18; width += 2)
        for (int height = 0; height <= 19; ++height) {
            SCOPED_TRACE(testing::Message() << width << " x " << height);
            take(test::makeImage(Content::noise, 3, 8, width, height));
            expectAsDecompressor(stream);
        }
}

TEST_F(TeskDecompress, NoiseDecodesLikeTheDecompressor) {
    bool seen[9] = {};
    for (std::uint64_t seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        const test::SampleKind kind = test::kKindsOfBothProfiles[seed % 7];
        const qmx::TKHeader header = qmx::makeHeader(kind.bytesPerPixel, kind.bitsPerPixel, 33, 34);
        const Bytes noise = test::noiseStream(header, 60, seed);
        expectAsDecompressor(noise);
        seen[decompressCall(codec.get(), noise).status] = true;
    }
    EXPECT_TRUE(seen[TESK_OK] && seen[TESK_CUT] && seen[TESK_INVALID_STREAM]);
}

TEST_F(TeskDecompress, GapsStayAsTheyAreAtAnyAddress) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 9}, {2, 16}}) {
        take(test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 15, 11));
        for (std::size_t gap = 0; gap <= 5; ++gap)
            for (std::size_t shift = 1; shift <= 4; ++shift) {
                SCOPED_TRACE(testing::Message() << "gap " << gap << ", address " << shift);
                const std::size_t stride = test::rowBytesOf(image) + gap;
                Bytes expected = test::spread(image, stride, 0xA5);
                const std::size_t extent = expected.size();
                expected.insert(expected.begin(), shift, 0xA5);
                expected.resize(expected.size() + 9, 0xA5);
                Bytes out(expected.size(), 0xA5);
                EXPECT_EQ(into(out, shift, extent - 1, stride), TESK_BUFFER_TOO_SMALL);
                EXPECT_EQ(out, Bytes(expected.size(), 0xA5));
                EXPECT_EQ(into(out, shift, extent, stride), TESK_OK);
                EXPECT_TRUE(sameBytes(expected, out));
            }
    }
}

TEST_F(TeskDecompress, StridesBelowARowOrBeyondAllAddressesAreInvalid) {
    Bytes out(256, 0xA5);
    for (const std::size_t stride : {std::size_t{1}, std::size_t{15}, kMostDistance / 16 + 1,
                                     kMostDistance, kMostDistance + 1, kMost})
        EXPECT_EQ(into(out, 0, kMost, stride), TESK_INVALID_ARGUMENT) << stride;
    EXPECT_EQ(into(out, 0, 256, kMostDistance / 16), TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(out, Bytes(256, 0xA5));
}

TEST_F(TeskDecompress, ImagesWithoutPixelsNeedNoBufferAndTakeAnyStride) {
    for (const auto& [width, height] : {std::pair(0, 0), {0, 9}, {9, 0}, {65535, 0}}) {
        take(test::makeImage(Content::flat, 1, 8, width, height));
        for (const std::size_t stride : {std::size_t{0}, std::size_t{1}, kMost})
            EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), nullptr, 0, stride,
                                      nullptr),
                      TESK_OK);
    }
}

TEST_F(TeskDecompress, StreamsWithoutAWholeHeaderOrWithAnotherMagicAreInvalid) {
    Bytes out(256, 0xA5);
    const auto decompress = [&](const Bytes& bytes, std::size_t size) {
        return tesk_decompress(codec.get(), bytes.data(), size, out.data(), out.size(), 0, nullptr);
    };
    for (std::size_t size = 0; size < 16; ++size)
        EXPECT_EQ(decompress(stream, size), TESK_INVALID_STREAM);
    for (std::size_t i = 0; i < 4; ++i) {
        Bytes other = stream;
        other[i] = '?';
        EXPECT_EQ(decompress(other, other.size()), TESK_INVALID_STREAM);
    }
    for (const int bytes : {0, 4, 255}) {
        Bytes other = stream;
        other[4] = static_cast<unsigned char>(bytes);
        EXPECT_EQ(decompress(other, other.size()), TESK_UNSUPPORTED_FORMAT);
    }
    EXPECT_EQ(out, Bytes(256, 0xA5));
    EXPECT_EQ(decompress(stream, stream.size()), TESK_OK);
}

TEST_F(TeskDecompress, ASectionThatTheImageLacksLeavesTheBufferAlone) {
    Bytes invalid = prefixOf(stream, 16);
    invalid.resize(26);
    invalid[16] = 7;
    invalid[17] = 0x3D;  // plane 1 of one
    Bytes out(256, 0xA5);
    EXPECT_EQ(tesk_decompress(codec.get(), invalid.data(), invalid.size(), out.data(), out.size(),
                              0, nullptr),
              TESK_INVALID_STREAM);
    EXPECT_EQ(out, Bytes(256, 0xA5));
}

TEST_F(TeskDecompress, NullPointersAndUnknownStructSizesAreInvalid) {
    Bytes out(256, 0xA5);
    const auto decompress = [&](tesk_codec* with, const void* bytes, void* to,
                                tesk_result* result) {
        return tesk_decompress(with, bytes, stream.size(), to, out.size(), 0, result);
    };
    EXPECT_EQ(decompress(nullptr, stream.data(), out.data(), nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(decompress(codec.get(), nullptr, out.data(), nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(decompress(codec.get(), stream.data(), nullptr, nullptr), TESK_INVALID_ARGUMENT);
    for (const std::size_t size : {std::size_t{0}, sizeof(tesk_result) - 1}) {
        tesk_result result{size, 5, 6, TESK_LOSS_NONE, 0};
        EXPECT_EQ(decompress(codec.get(), stream.data(), out.data(), &result),
                  TESK_INVALID_ARGUMENT);
        EXPECT_EQ(result.peak_memory_bytes, 6U);
    }
    EXPECT_EQ(out, Bytes(256, 0xA5));
    EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), nullptr, 0, 0, nullptr),
              TESK_BUFFER_TOO_SMALL);
    EXPECT_EQ(decompress(codec.get(), stream.data(), out.data(), nullptr), TESK_OK);
}

}  // namespace
