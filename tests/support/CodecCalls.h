#pragma once

#include <memory>

#include "support/Outcome.h"

// The C interface on images and streams that are byte strings.

namespace test {

struct CodecDestroyer {
    void operator()(tesk_codec* codec) const { tesk_destroy(codec); }
};
using Codec = std::unique_ptr<tesk_codec, CodecDestroyer>;

inline Codec makeCodec(const tesk_options* options = nullptr) {
    tesk_codec* codec = nullptr;
    EXPECT_EQ(tesk_create(options, &codec), TESK_OK);
    return Codec(codec);
}

inline Codec makeCodecWithFlags(std::uint32_t flags) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.flags = flags;
    return makeCodec(&options);
}

inline tesk_image geometryOf(const RawImage& image) {
    tesk_image geometry = TESK_IMAGE_INIT;
    geometry.width = static_cast<std::uint32_t>(image.width);
    geometry.height = static_cast<std::uint32_t>(image.height);
    geometry.bytes_per_pixel = static_cast<std::uint32_t>(image.bytesPerPixel);
    geometry.bits_per_pixel = static_cast<std::uint32_t>(image.bitsPerPixel);
    return geometry;
}

inline std::size_t rowBytesOf(const RawImage& image) {
    return static_cast<std::size_t>(image.width) * static_cast<std::size_t>(image.bytesPerPixel);
}

/// Compresses to a block of the codec.
inline Call compressCall(tesk_codec* codec, const RawImage& image, std::size_t budgetBytes = 0) {
    const tesk_image geometry = geometryOf(image);
    void* block = nullptr;
    Call call;
    call.status = tesk_compress_to_block(codec, &geometry, image.bytes.data(), 0, budgetBytes,
                                         &block, &call.result);
    EXPECT_EQ(block != nullptr, call.isUsable());
    if (block == nullptr) return call;
    const auto* bytes = static_cast<const unsigned char*>(block);
    call.bytes.assign(bytes, bytes + call.result.stream_bytes);
    tesk_release_block(codec, block);
    return call;
}

inline std::size_t rawBytesOf(const tesk_image& geometry) {
    return std::size_t{geometry.width} * geometry.height * geometry.bytes_per_pixel;
}

/// Decompresses to rows without gaps.
inline Call decompressCall(tesk_codec* codec, const Bytes& stream) {
    tesk_image geometry = TESK_IMAGE_INIT;
    Call call;
    if (tesk_probe(stream.data(), stream.size(), &geometry) == TESK_OK)
        call.bytes.resize(rawBytesOf(geometry));
    call.status = tesk_decompress(codec, stream.data(), stream.size(), call.bytes.data(),
                                  call.bytes.size(), 0, &call.result);
    if (!call.isUsable()) call.bytes.clear();
    return call;
}

/// Decompresses to rows without gaps at 1 : 2^levels.
inline Call reduceCall(tesk_codec* codec, const Bytes& stream, std::uint32_t levels) {
    tesk_image geometry = TESK_IMAGE_INIT;
    Call call;
    if (tesk_probe(stream.data(), stream.size(), &geometry) == TESK_OK &&
        tesk_reduced_image(&geometry, levels, &geometry) == TESK_OK)
        call.bytes.resize(rawBytesOf(geometry));
    call.status = tesk_decompress_reduced(codec, stream.data(), stream.size(), levels,
                                          call.bytes.data(), call.bytes.size(), 0, &call.result);
    if (!call.isUsable()) call.bytes.clear();
    return call;
}

/// Returns: rows spread to a stride, gaps filled with filler; nothing behind the last row.
inline Bytes spread(const RawImage& image, std::size_t strideBytes, unsigned char filler) {
    const std::size_t rowBytes = rowBytesOf(image);
    const auto rows = static_cast<std::size_t>(image.height);
    if (rows == 0) return {};
    Bytes bytes((rows - 1) * strideBytes + rowBytes, filler);
    for (std::size_t r = 0; r < rows; ++r)
        std::copy_n(image.bytes.data() + r * rowBytes, rowBytes, bytes.data() + r * strideBytes);
    return bytes;
}

}  // namespace test
