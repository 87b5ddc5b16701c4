#pragma once

#include <cstdint>
#include <vector>

namespace reference {

/// A raw image: the bytes of the raw file and its geometry as the command line gives it.
struct RawImage {
    int bytesPerPixel;
    int bitsPerPixel;
    int width;
    int height;
    std::vector<unsigned char> bytes;
};

/// What the header of a stream says, that is the geometry after its fields wrapped
/// (docs/format.md, 3).
struct Geometry {
    std::int64_t bytesPerPixel = 0;
    std::int64_t bitsPerPixel = 0;
    std::int64_t width = 0;
    std::int64_t height = 0;

    bool supported() const { return bytesPerPixel >= 1 && bytesPerPixel <= 3; }
    std::int64_t planeCount() const { return bytesPerPixel == 3 ? 3 : 1; }
    /// The bytes of one sample of one plane in the raw file (docs/format.md, 2).
    std::int64_t bytesPerSample() const { return bytesPerPixel == 2 ? 2 : 1; }
    std::int64_t pixelCount() const { return width * height; }
    /// B of the file profile (docs/format.md, 3).
    std::int64_t coefficientBits() const {
        return bytesPerPixel == 2 && bitsPerPixel >= 13 ? 32 : 16;
    }
};

/// The header takes 16 bytes, whatever the image is (docs/format.md, 3).
constexpr std::int64_t kHeaderBytes = 16;

/// bitlength(v), the number of bits of v >= 0 without leading zeros (docs/format.md, 1).
inline std::int64_t bitLength(std::int64_t v) {
    std::int64_t length = 0;
    for (; v > 0; v >>= 1)
        ++length;
    return length;
}

/// Wlen(o), the width of the length field of a section. It may be zero or negative for orders that
/// no coefficient has (docs/format.md, 10.1 and 13.1).
inline std::int64_t lengthFieldBits(const Geometry& geometry, std::int64_t order) {
    return bitLength(geometry.pixelCount()) + 1 - 2 * order;
}

}  // namespace reference
