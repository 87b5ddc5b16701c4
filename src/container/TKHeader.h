#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>

namespace qmx {

#pragma GCC visibility push(default)

/// The first 16 bytes of every stream, as they are in the file.
/// Format: docs/format.md, 3 Header.
struct TKHeader {
    static constexpr char kMagic[] = {'T', 'K', '3', '0'};

    char magic[4];
    /// 1: one plane of 8 bits; 2: one plane of 16 bits; 3: three interleaved planes of 8 bits.
    std::uint8_t bytesPerPixel;
    /// Declared bits of one sample: 8 for an RGB image of 8-bit samples, not 24.
    std::uint8_t bitsPerPixel;
    /// Pixels, little-endian.
    std::uint16_t xSize;
    std::uint16_t ySize;
    /// Written as 0, ignored when read.
    std::uint8_t reserved[6];

    bool isRecognised() const { return std::memcmp(magic, kMagic, sizeof magic) == 0; }
    bool isSupported() const { return bytesPerPixel >= 1 && bytesPerPixel <= 3; }
    int planes() const { return bytesPerPixel == 3 ? 3 : 1; }
    /// Bytes of a row of the raw image, and of all of it.
    std::size_t rawRowBytes() const { return std::size_t{xSize} * bytesPerPixel; }
    std::uint64_t rawBytes() const { return std::uint64_t{rawRowBytes()} * ySize; }
};

static_assert(sizeof(TKHeader) == 16 && std::is_trivially_copyable_v<TKHeader>);

/// Returns: a header for an image, each number truncated to the width of its field.
inline TKHeader makeHeader(std::int64_t bytesPerPixel, std::int64_t bitsPerPixel,
                           std::int64_t width, std::int64_t height) {
    TKHeader header{};
    std::memcpy(header.magic, TKHeader::kMagic, sizeof header.magic);
    header.bytesPerPixel = static_cast<std::uint8_t>(bytesPerPixel);
    header.bitsPerPixel = static_cast<std::uint8_t>(bitsPerPixel);
    header.xSize = static_cast<std::uint16_t>(width);
    header.ySize = static_cast<std::uint16_t>(height);
    return header;
}

/// A base for codec objects that carry the header of their stream.
class CTeskHeader : protected TKHeader {
protected:
    CTeskHeader() : TKHeader{} {}
    explicit CTeskHeader(const TKHeader& header) : TKHeader(header) {}
};

#pragma GCC visibility pop

}  // namespace qmx
