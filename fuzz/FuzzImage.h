#pragma once

#include "FuzzCodec.h"

namespace fuzz {

/// Images of so many rows, more than any ring of rows holds, count as large.
inline constexpr std::uint32_t kFewestLargeRows = 256;

/// An image whose geometry and samples come from the input.
struct Image {
    tesk_image geometry = TESK_IMAGE_INIT;
    Bytes pixels;

    bool isLarge() const { return geometry.height >= kFewestLargeRows; }
};

/// One image in ten is large.
inline constexpr std::uint64_t kFirstLargeShape = 230;

/// Takes the sides of an image: up to 139 each, up to 2999 x 11, or large: of 65536 pixels at least,
/// and some more so that sections may be too long.
inline void takeSides(FuzzInput& input, tesk_image& geometry) {
    const std::uint64_t shape = input.below(256);
    if (shape >= kFirstLargeShape) {
        geometry.height = kFewestLargeRows + static_cast<std::uint32_t>(input.below(64));
        const std::uint32_t fewest = (65535 + geometry.height) / geometry.height;
        const std::uint32_t more = static_cast<std::uint32_t>(input.below(160));
        // Three planes take long enough without.
        geometry.width = fewest + (geometry.bytes_per_pixel == 3 ? more % 4 : more);
        return;
    }
    const bool isLong = (shape & 1) != 0;
    geometry.width = static_cast<std::uint32_t>(input.below(isLong ? 3000 : 140));
    geometry.height = static_cast<std::uint32_t>(input.below(isLong ? 12 : 140));
}

/// Returns: bits that look random, the same for the same i.
inline unsigned noise(std::size_t i) {
    return static_cast<unsigned>((i + 1) * 0x9E3779B97F4A7C15U >> 40);
}

/// Takes an image. Its samples are the rest of the input, repeated; a short rest gives patterns,
/// with a counter and noise on top where the input asks for it.
inline Image takeImage(FuzzInput& input) {
    Image image;
    tesk_image& geometry = image.geometry;
    geometry.bytes_per_pixel = static_cast<std::uint32_t>(1 + input.below(3));
    const std::uint32_t sampleBits = geometry.bytes_per_pixel == 2 ? 16 : 8;
    geometry.bits_per_pixel = static_cast<std::uint32_t>(1 + input.below(sampleBits));
    takeSides(input, geometry);
    const std::uint64_t texture = input.below(256);
    const auto slope = static_cast<unsigned>(texture % 8);
    // 0 or 1, 3, 7, ... 127.
    const unsigned noiseMask = (1U << texture / 8 % 8) - 1;
    const std::size_t sizeBytes =
        std::size_t{geometry.width} * geometry.height * geometry.bytes_per_pixel;
    const Bytes pattern = input.rest();
    image.pixels.resize(sizeBytes);
    for (std::size_t i = 0, place = 0; i < sizeBytes; ++i, ++place) {
        if (place == pattern.size()) place = 0;
        const unsigned base = pattern.empty() ? 0U : pattern[place];
        image.pixels[i] =
            static_cast<unsigned char>(base + slope * (i / 16) + (noise(i) & noiseMask));
    }
    return image;
}

inline void requireBounded(const Image& image, const Bytes& stream) {
    require(stream.size() <= tesk_compress_bound(&image.geometry), "the bound holds");
}

/// Returns: the plain stream of an image, complete for a budget of 0; empty when memory was refused.
/// loss may be null.
inline Bytes compress(const Image& image, std::size_t budgetBytes, tesk_loss* loss = nullptr) {
    const Codec codec = makeCodec(TESK_PLAIN);
    void* block = nullptr;
    tesk_result result = TESK_RESULT_INIT;
    const tesk_status status = tesk_compress_to_block(
        codec.get(), &image.geometry, image.pixels.data(), 0, budgetBytes, &block, &result);
    if (status == TESK_OUT_OF_MEMORY) return {};
    require(status == TESK_OK || (status == TESK_CUT && budgetBytes != 0), "the image compresses");
    const auto* bytes = static_cast<const unsigned char*>(block);
    Bytes stream(bytes, bytes + result.stream_bytes);
    tesk_release_block(codec.get(), block);
    requireBounded(image, stream);
    if (loss != nullptr) *loss = result.loss;
    require(status != TESK_CUT || stream.size() == budgetBytes, "a cut stream fills its budget");
    return stream;
}

}  // namespace fuzz
