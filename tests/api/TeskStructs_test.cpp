#include <algorithm>
#include <cstddef>
#include <cstring>
#include <gtest/gtest.h>

#include "api/tesk.h"
#include "support/CodecCalls.h"

// Structs that grow: callers and libraries of different versions.

namespace {

using test::Bytes;

// The structs of version 1.0. A later one may be longer; it then has to take these sizes too, and a
// field that is added begins where the struct ended, never in the four bytes that fill tesk_options.
constexpr std::size_t kFirstImageBytes = 24;
constexpr std::size_t kFirstOptionsBytes = 56;
constexpr std::size_t kFirstResultBytes = 32;

static_assert(sizeof(tesk_image) >= kFirstImageBytes);
static_assert(offsetof(tesk_image, struct_bytes) == 0);
static_assert(offsetof(tesk_image, width) == 8);
static_assert(offsetof(tesk_image, height) == 12);
static_assert(offsetof(tesk_image, bytes_per_pixel) == 16);
static_assert(offsetof(tesk_image, bits_per_pixel) == 20);

static_assert(sizeof(tesk_options) >= kFirstOptionsBytes);
static_assert(offsetof(tesk_options, struct_bytes) == 0);
static_assert(offsetof(tesk_options, max_pixels) == 8);
static_assert(offsetof(tesk_options, max_memory_bytes) == 16);
static_assert(offsetof(tesk_options, allocate) == 24);
static_assert(offsetof(tesk_options, release) == 32);
static_assert(offsetof(tesk_options, user) == 40);
static_assert(offsetof(tesk_options, flags) == 48);

static_assert(sizeof(tesk_result) >= kFirstResultBytes);
static_assert(offsetof(tesk_result, struct_bytes) == 0);
static_assert(offsetof(tesk_result, stream_bytes) == 8);
static_assert(offsetof(tesk_result, peak_memory_bytes) == 16);
static_assert(offsetof(tesk_result, loss) == 24);
static_assert(offsetof(tesk_result, rescue) == 28);

/// A struct with a size of its own: its known bytes, and as many of filler as it takes.
template <class Struct>
class Sized {
public:
    Sized(Struct known, std::size_t sizeBytes, unsigned char filler = 0)
        : bytes(std::max(sizeBytes, sizeof(Struct)), filler) {
        known.struct_bytes = sizeBytes;
        std::memcpy(bytes.data(), &known, sizeof known);
    }
    Struct* get() { return reinterpret_cast<Struct*>(bytes.data()); }

    Bytes bytes;
};

class TeskStructs : public testing::Test {
protected:
    tesk_status compress(const tesk_image* shape, tesk_result* result) const {
        void* block = nullptr;
        const tesk_status status =
            tesk_compress_to_block(codec.get(), shape, image.bytes.data(), 0, 0, &block, result);
        tesk_release_block(codec.get(), block);
        return status;
    }
    static tesk_status create(const tesk_options* options) {
        tesk_codec* made = nullptr;
        const tesk_status status = tesk_create(options, &made);
        tesk_destroy(made);
        return status;
    }

    test::Codec codec = test::makeCodec();
    test::RawImage image = test::makeImage(test::Content::noise, 3, 8, 20, 20);
    tesk_image geometry = test::geometryOf(image);
    Bytes stream = test::compressCall(codec.get(), image).bytes;
};

TEST_F(TeskStructs, ShorterOnesThanThoseOfTheFirstReleaseAreInvalid) {
    for (std::size_t size = 0; size < kFirstImageBytes; ++size) {
        Sized<tesk_image> shape(geometry, size);
        EXPECT_EQ(compress(shape.get(), nullptr), TESK_INVALID_ARGUMENT) << size;
        EXPECT_EQ(tesk_probe(stream.data(), stream.size(), shape.get()), TESK_INVALID_ARGUMENT);
    }
    for (std::size_t size = 0; size < kFirstOptionsBytes; ++size)
        EXPECT_EQ(create(Sized<tesk_options>(TESK_OPTIONS_INIT, size).get()), TESK_INVALID_ARGUMENT)
            << size;
    for (std::size_t size = 0; size < kFirstResultBytes; ++size)
        EXPECT_EQ(compress(&geometry, Sized<tesk_result>(TESK_RESULT_INIT, size).get()),
                  TESK_INVALID_ARGUMENT)
            << size;
}

TEST_F(TeskStructs, LongerOnesAreTakenWhenTheRestIsZero) {
    for (const std::size_t more : {1U, 4U, 8U, 40U}) {
        Sized<tesk_image> shape(geometry, sizeof geometry + more);
        EXPECT_EQ(compress(shape.get(), nullptr), TESK_OK) << more;
        Sized<tesk_options> options(TESK_OPTIONS_INIT, sizeof(tesk_options) + more);
        EXPECT_EQ(create(options.get()), TESK_OK) << more;
    }
}

TEST_F(TeskStructs, LongerOnesThatAskForSomethingUnknownAreInvalid) {
    constexpr std::size_t kMore = 12;
    for (std::size_t at = 0; at < kMore; ++at) {
        Sized<tesk_image> shape(geometry, sizeof geometry + kMore);
        shape.bytes[sizeof geometry + at] = 1;
        EXPECT_EQ(compress(shape.get(), nullptr), TESK_INVALID_ARGUMENT) << at;
        Sized<tesk_options> options(TESK_OPTIONS_INIT, sizeof(tesk_options) + kMore);
        options.bytes[sizeof(tesk_options) + at] = 0x80;
        EXPECT_EQ(create(options.get()), TESK_INVALID_ARGUMENT) << at;
    }
}

TEST_F(TeskStructs, CallsFillInWhatTheyKnowAndLeaveTheRest) {
    constexpr std::size_t kMore = 24;
    constexpr unsigned char kFiller = 0xA5;
    const Bytes rest(kMore, kFiller);

    Sized<tesk_result> result(TESK_RESULT_INIT, sizeof(tesk_result) + kMore, kFiller);
    EXPECT_EQ(compress(&geometry, result.get()), TESK_OK);
    EXPECT_EQ(result.get()->struct_bytes, sizeof(tesk_result) + kMore);
    EXPECT_EQ(result.get()->stream_bytes, stream.size());
    EXPECT_EQ(Bytes(result.bytes.end() - kMore, result.bytes.end()), rest);

    Bytes out(image.bytes.size());
    EXPECT_EQ(tesk_decompress(codec.get(), stream.data(), stream.size(), out.data(), out.size(), 0,
                              result.get()),
              TESK_OK);
    EXPECT_EQ(result.get()->stream_bytes, 0U);
    EXPECT_EQ(Bytes(result.bytes.end() - kMore, result.bytes.end()), rest);

    Sized<tesk_image> shape(TESK_IMAGE_INIT, sizeof(tesk_image) + kMore, kFiller);
    EXPECT_EQ(tesk_probe(stream.data(), stream.size(), shape.get()), TESK_OK);
    EXPECT_EQ(shape.get()->width, geometry.width);
    EXPECT_EQ(Bytes(shape.bytes.end() - kMore, shape.bytes.end()), rest);
}

TEST_F(TeskStructs, SizesBeyondAllVersionsAreInvalid) {
    for (const std::size_t size : {std::size_t{4096}, std::size_t{4097}, ~std::size_t{0}}) {
        const tesk_status expected = size == 4096 ? TESK_OK : TESK_INVALID_ARGUMENT;
        Sized<tesk_image> shape(geometry, 4096);
        Sized<tesk_options> options(TESK_OPTIONS_INIT, 4096);
        Sized<tesk_result> result(TESK_RESULT_INIT, 4096);
        shape.get()->struct_bytes = options.get()->struct_bytes = result.get()->struct_bytes = size;
        EXPECT_EQ(compress(shape.get(), nullptr), expected);
        EXPECT_EQ(compress(&geometry, result.get()), expected);
        EXPECT_EQ(tesk_probe(stream.data(), stream.size(), shape.get()), expected);
        EXPECT_EQ(create(options.get()), expected);
    }
}

}  // namespace
