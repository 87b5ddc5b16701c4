// What a codec holds while rows are under way: the stream, as far as it is coded, and a few rows.

#include <cmath>
#include <gtest/gtest.h>

#include "support/EveryDecoder.h"
#include "support/RowCalls.h"

namespace {

using test::Bytes;

/// 400 million pixels; sanitizers are slow.
constexpr std::uint32_t kSide = test::kRunsInFull ? 20000 : 2000;

/// Memory that is counted.
struct Held {
    static void* allocate(void* user, std::size_t size) {
        auto* memory = static_cast<std::size_t*>(std::malloc(size + kHeadBytes));
        *memory = size;
        static_cast<Held*>(user)->bytes += size;
        return memory + kHeadBytes / sizeof(std::size_t);
    }
    static void release(void* user, void* block) {
        std::size_t* memory = static_cast<std::size_t*>(block) - kHeadBytes / sizeof(std::size_t);
        static_cast<Held*>(user)->bytes -= *memory;
        std::free(memory);
    }

    static constexpr std::size_t kHeadBytes = 16;
    std::size_t bytes = 0;
};

/// Rows of a picture that is made while it is needed.
class Rows {
public:
    /// Row r: bands of light, with grain.
    const Bytes& at(std::uint32_t r) {
        const auto light = static_cast<unsigned>(100 + 60 * std::sin(r * 0.003));
        for (unsigned c = 0; c < kSide; ++c) {
            const unsigned grain = noise[(c + r * 977) % noise.size()] % 8;
            row[c] = static_cast<unsigned char>(light + (c >> 8) % 32 + grain);
        }
        return row;
    }

private:
    Bytes row = Bytes(kSide);
    Bytes noise = test::makeImage(test::Content::noise, 1, 8, 257, 257).bytes;
};

TEST(RowCallMemory, IsThatOfTheStreamAndAFewRows) {
    Held held;
    tesk_options options = TESK_OPTIONS_INIT;
    options.allocate = Held::allocate;
    options.release = Held::release;
    options.user = &held;
    test::Codec codec = test::makeCodec(&options);
    tesk_image image = TESK_IMAGE_INIT;
    image.width = image.height = kSide;
    image.bytes_per_pixel = 1;
    image.bits_per_pixel = 8;
    // As docs/limits.md has it.
    constexpr std::size_t kCompressBytes = 100'000 + 16 * std::size_t{kSide};
    constexpr std::size_t kDecompressBytes = 100'000 + 300 * std::size_t{kSide};

    Rows rows;
    ASSERT_EQ(tesk_compress_begin(codec.get(), &image, 0), TESK_OK);
    EXPECT_LE(held.bytes, kCompressBytes);
    for (std::uint32_t r = 0; r < kSide; ++r)
        ASSERT_EQ(tesk_compress_rows(codec.get(), rows.at(r).data(), 0, 1), TESK_OK);
    const std::size_t underWay = held.bytes;
    void* block = nullptr;
    tesk_result result = TESK_RESULT_INIT;
    ASSERT_EQ(tesk_compress_end(codec.get(), &block, &result), TESK_OK);
    // Sections in chunks whose last ones are not full.
    const std::size_t unfilled = std::max<std::size_t>(result.stream_bytes / 20, 200'000);
    const std::size_t sections = result.stream_bytes + unfilled;
    EXPECT_LE(underWay, sections + kCompressBytes);
    EXPECT_LE(result.peak_memory_bytes, sections + result.stream_bytes + kDecompressBytes);

    Rows again;
    Bytes row(kSide);
    ASSERT_EQ(tesk_decompress_begin(codec.get(), block, result.stream_bytes, nullptr), TESK_OK);
    for (std::uint32_t r = 0; r < kSide; ++r) {
        ASSERT_EQ(tesk_decompress_rows(codec.get(), row.data(), 0, 1), TESK_OK);
        ASSERT_EQ(row, again.at(r)) << r;
    }
    tesk_result back = TESK_RESULT_INIT;
    ASSERT_EQ(tesk_decompress_end(codec.get(), &back), TESK_OK);
    EXPECT_LE(back.peak_memory_bytes, kDecompressBytes);
    std::printf("stream %zu, under way %zu, peak %zu, back %zu\n", result.stream_bytes, underWay,
                result.peak_memory_bytes, back.peak_memory_bytes);
    tesk_release_block(codec.get(), block);
}

}  // namespace
