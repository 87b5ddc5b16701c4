#include <gtest/gtest.h>

#include "container/StreamBound.h"
#include "support/CodecCalls.h"
#include "support/LibraryCodec.h"
#include "support/OrOfSamples.h"

// What the C interface tells about images: sizes and used bits.

namespace {

using test::Bytes;
using test::RawImage;

tesk_image geometry(std::uint32_t width, std::uint32_t height, std::uint32_t bytesPerPixel,
                    std::uint32_t bitsPerPixel) {
    tesk_image image = TESK_IMAGE_INIT;
    image.width = width;
    image.height = height;
    image.bytes_per_pixel = bytesPerPixel;
    image.bits_per_pixel = bitsPerPixel;
    return image;
}

/// Images that no stream can hold, and images that only the tool compresses.
const tesk_image kUnsupported[] = {geometry(65536, 1, 1, 8), geometry(1, 65536, 1, 8),
                                   geometry(9, 9, 0, 8), geometry(9, 9, 4, 8)};
const tesk_image kOddBits[] = {geometry(9, 9, 1, 0),  geometry(9, 9, 1, 9), geometry(9, 9, 3, 9),
                               geometry(9, 9, 3, 24), geometry(9, 9, 2, 0), geometry(9, 9, 2, 17)};

TEST(RawBytes, AreThoseOfThePixels) {
    for (const std::uint32_t bytes : {1U, 2U, 3U})
        for (const std::uint32_t width : {0U, 1U, 2U, 640U, 65535U})
            for (const std::uint32_t height : {0U, 1U, 3U, 480U, 65535U}) {
                const tesk_image image = geometry(width, height, bytes, 8);
                EXPECT_EQ(tesk_raw_bytes(&image), std::uint64_t{width} * height * bytes);
            }
}

/// The tool makes such streams, and tesk_decompress takes them.
TEST(RawBytes, DoNotDependOnTheDeclaredBits) {
    for (const tesk_image& image : kOddBits)
        EXPECT_EQ(tesk_raw_bytes(&image), 81U * image.bytes_per_pixel);
}

TEST(CompressBound, OfDeclaredBitsThatCompressionRefusesIsZero) {
    for (const tesk_image& image : kOddBits)
        EXPECT_EQ(tesk_compress_bound(&image), 0U);
}

TEST(CompressBound, IsThatOfTheHeader) {
    for (const std::uint32_t bytes : {1U, 2U, 3U})
        for (const std::uint32_t side : {0U, 1U, 3U, 40U, 65535U}) {
            const tesk_image image = geometry(side, side, bytes, 8);
            const auto length = static_cast<long>(side);
            EXPECT_EQ(tesk_compress_bound(&image),
                      qmx::streamBoundBytes(
                          qmx::makeHeader(static_cast<long>(bytes), 8, length, length)));
        }
}

TEST(CompressBound, IsRoomEnough) {
    const test::Codec codec = test::makeCodec();
    for (const int bytes : {1, 2, 3}) {
        const RawImage noise = test::makeImage(test::Content::noise, bytes, 8, 33, 21);
        const tesk_image image = test::geometryOf(noise);
        Bytes out(tesk_compress_bound(&image));
        EXPECT_EQ(tesk_compress(codec.get(), &image, noise.bytes.data(), 0, 0, out.data(),
                                out.size(), nullptr),
                  TESK_OK);
    }
}

TEST(ImageFacts, AreZeroWhereNoStreamCanHoldTheImage) {
    EXPECT_EQ(tesk_raw_bytes(nullptr), 0U);
    EXPECT_EQ(tesk_compress_bound(nullptr), 0U);
    for (const tesk_image& image : kUnsupported) {
        EXPECT_EQ(tesk_raw_bytes(&image), 0U);
        EXPECT_EQ(tesk_compress_bound(&image), 0U);
    }
    for (const std::size_t size : {std::size_t{0}, sizeof(tesk_image) - 1, std::size_t{4097}}) {
        tesk_image image = geometry(9, 9, 1, 8);
        image.struct_bytes = size;
        EXPECT_EQ(tesk_raw_bytes(&image), 0U);
        EXPECT_EQ(tesk_compress_bound(&image), 0U);
    }
}

int sampleBytesOf(const RawImage& image) {
    return image.bytesPerPixel == 2 ? 2 : 1;
}

/// Returns: samples with few bits each, so that no sample has all that are used.
RawImage makeSparse(int bytesPerPixel, int width, int height, std::uint64_t seed) {
    RawImage image = test::makeImage(test::Content::flat, bytesPerPixel, 1, width, height);
    test::Random random(seed);
    for (unsigned char& byte : image.bytes)
        byte = random.below(9) == 0 ? static_cast<unsigned char>(1U << random.below(8)) : 0;
    return image;
}

std::uint32_t usedBits(const tesk_image& image, const void* pixels, std::size_t stride = 0) {
    std::uint32_t used = 99;
    EXPECT_EQ(tesk_used_bits(&image, pixels, stride, &used), TESK_OK);
    return used;
}

TEST(UsedBits, OfImagesAreThoseOfALoopAtAllSizesAndStrides) {
    constexpr int kSides[] = {0, 1, 2, 3, 7, 8, 31, 33, 100};
    for (const int bytes : {1, 2, 3})
        for (const int width : kSides)
            for (const int height : kSides) {
                const RawImage image = makeSparse(bytes, width, height, 11);
                const std::uint32_t expected = test::orOfSamples(image.bytes, sampleBytesOf(image));
                const tesk_image shape = test::geometryOf(image);
                EXPECT_EQ(usedBits(shape, image.bytes.data()), expected);
                for (const std::size_t gap : {0U, 1U, 2U, 13U}) {
                    const std::size_t stride = test::rowBytesOf(image) + gap;
                    // What is between the rows, and in front of them, does not count.
                    Bytes spread = test::spread(image, stride, 0xFF);
                    spread.insert(spread.begin(), 0xFF);
                    EXPECT_EQ(usedBits(shape, spread.data() + 1, stride), expected);
                }
            }
}

TEST(UsedBits, DeclaredBitsAreNotRead) {
    const Bytes pixels{0x30, 0x10, 0, 0};
    for (const std::uint32_t bits : {0U, 1U, 8U, 99U, ~0U})
        EXPECT_EQ(usedBits(geometry(2, 2, 1, bits), pixels.data()), 0x30U);
}

TEST(UsedBits, AreThoseThatCompressionKeeps) {
    const RawImage image = test::makeImage(test::Content::noise, 2, 13, 40, 30);
    EXPECT_EQ(usedBits(test::geometryOf(image), image.bytes.data()), 0x1FFFU);
}

TEST(UsedBits, AllRowsAreSeen) {
    for (const int bytes : {1, 2, 3})
        for (int last = 0; last < 40; ++last) {
            RawImage image{bytes, 1, 1, 40, Bytes(static_cast<std::size_t>(40 * bytes))};
            image.bytes[static_cast<std::size_t>(last * bytes)] = 0x40;
            const std::uint32_t expected = test::orOfSamples(image.bytes, sampleBytesOf(image));
            EXPECT_EQ(usedBits(test::geometryOf(image), image.bytes.data()), expected);
        }
}

/// Returns: the status of a call that fails, which leaves 0.
tesk_status failing(const tesk_image* image, const void* pixels, std::size_t stride = 0) {
    std::uint32_t used = 99;
    const tesk_status status = tesk_used_bits(image, pixels, stride, &used);
    EXPECT_EQ(used, 0U);
    return status;
}

TEST(UsedBits, WrongArgumentsAreRefused) {
    const Bytes pixels(100);
    const tesk_image image = geometry(5, 4, 3, 8);
    EXPECT_EQ(tesk_used_bits(&image, pixels.data(), 0, nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(failing(nullptr, pixels.data()), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(failing(&image, nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(failing(&image, pixels.data(), 14), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(failing(&image, pixels.data(), ~std::size_t{0}), TESK_INVALID_ARGUMENT);
    for (const std::size_t size : {std::size_t{0}, sizeof(tesk_image) - 1, std::size_t{4097}}) {
        tesk_image unknown = image;
        unknown.struct_bytes = size;
        EXPECT_EQ(failing(&unknown, pixels.data()), TESK_INVALID_ARGUMENT);
    }
    for (const tesk_image& odd : kUnsupported)
        EXPECT_EQ(failing(&odd, pixels.data()), TESK_UNSUPPORTED_FORMAT);
    EXPECT_EQ(usedBits(geometry(0, 4, 3, 8), nullptr), 0U);
    EXPECT_EQ(usedBits(geometry(5, 0, 3, 8), nullptr, 3), 0U);
}

TEST(UsedBits, AStructOfALaterVersionMayNotAskForMore) {
    struct Later {
        tesk_image image;
        std::uint64_t more;
    };
    Later later{geometry(2, 2, 1, 8), 0};
    later.image.struct_bytes = sizeof later;
    const Bytes pixels{1, 2, 4, 0};
    EXPECT_EQ(usedBits(later.image, pixels.data()), 7U);
    EXPECT_EQ(tesk_raw_bytes(&later.image), 4U);
    later.more = 1;
    EXPECT_EQ(failing(&later.image, pixels.data()), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_raw_bytes(&later.image), 0U);
    EXPECT_EQ(tesk_compress_bound(&later.image), 0U);
}

}  // namespace
