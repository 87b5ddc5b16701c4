#pragma once

#include "support/CodecCalls.h"

// An image through the row calls of the C interface.

namespace test {

/// How many rows go into one call: as many as a list says, again and again.
using Portions = std::vector<std::uint32_t>;

/// Calls work(firstRow, count) for portions until all rows are through or the status is not TESK_OK.
template <class Work>
tesk_status inPortions(std::uint32_t rows, const Portions& portions, Work work) {
    tesk_status status = TESK_OK;
    std::size_t next = 0;
    for (std::uint32_t r = 0; r < rows && status == TESK_OK;) {
        const std::uint32_t count = std::min(portions[next++ % portions.size()], rows - r);
        status = work(r, count);
        r += count;
    }
    return status;
}

/// Compresses image by portions. Rows stand rowBytes + gapBytes apart.
inline Call pushCall(tesk_codec* codec, const RawImage& image, std::size_t budgetBytes = 0,
                     const Portions& portions = {1}, std::size_t gapBytes = 0) {
    const tesk_image geometry = geometryOf(image);
    Call call;
    call.status = tesk_compress_begin(codec, &geometry, budgetBytes);
    if (call.status != TESK_OK) return call;
    const std::size_t stride = rowBytesOf(image) + gapBytes;
    call.status = inPortions(geometry.height, portions, [&](std::uint32_t r, std::uint32_t count) {
        // Rows are gone once they were taken.
        RawImage part{
            image.bytesPerPixel, image.bitsPerPixel, image.width, static_cast<int>(count), {}};
        const auto first = image.bytes.begin() + static_cast<std::ptrdiff_t>(r * rowBytesOf(image));
        part.bytes.assign(first, first + static_cast<std::ptrdiff_t>(count * rowBytesOf(image)));
        Bytes rows = spread(part, stride, 0xA5);
        const tesk_status status = tesk_compress_rows(codec, rows.data(), stride, count);
        std::fill(rows.begin(), rows.end(), static_cast<unsigned char>(0x5A));
        return status;
    });
    if (call.status != TESK_OK) return call;
    void* block = nullptr;
    call.status = tesk_compress_end(codec, &block, &call.result);
    EXPECT_EQ(block != nullptr, call.isUsable());
    const auto* bytes = static_cast<const unsigned char*>(block);
    if (block != nullptr) call.bytes.assign(bytes, bytes + call.result.stream_bytes);
    tesk_release_block(codec, block);
    return call;
}

/// Decompresses a stream by portions.
inline Call pullCall(tesk_codec* codec, const Bytes& stream, const Portions& portions = {1},
                     std::size_t gapBytes = 0) {
    constexpr unsigned char kUnwritten = 0xA5;
    tesk_image geometry = TESK_IMAGE_INIT;
    Call call;
    call.status = tesk_decompress_begin(codec, stream.data(), stream.size(), &geometry);
    if (call.status != TESK_OK) return call;
    const std::size_t rowBytes = std::size_t{geometry.width} * geometry.bytes_per_pixel;
    const std::size_t stride = rowBytes + gapBytes;
    call.status = inPortions(geometry.height, portions, [&](std::uint32_t, std::uint32_t count) {
        Bytes rows(count * stride, kUnwritten);
        const tesk_status status = tesk_decompress_rows(codec, rows.data(), stride, count);
        for (std::size_t r = 0; r < count && status == TESK_OK; ++r) {
            const auto row = rows.begin() + static_cast<std::ptrdiff_t>(r * stride);
            const auto end = row + static_cast<std::ptrdiff_t>(rowBytes);
            call.bytes.insert(call.bytes.end(), row, end);
            EXPECT_EQ(std::count(end, end + static_cast<std::ptrdiff_t>(gapBytes), kUnwritten),
                      static_cast<std::ptrdiff_t>(gapBytes));
        }
        return status;
    });
    if (call.status == TESK_OK) call.status = tesk_decompress_end(codec, &call.result);
    if (!call.isUsable()) call.bytes.clear();
    return call;
}

}  // namespace test
