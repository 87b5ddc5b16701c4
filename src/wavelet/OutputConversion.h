#pragma once

#include <cstdint>
#include <cstring>
#include <type_traits>

#include "image/CImageData.h"

namespace qmx {

/// Limits the samples of a stream that was cut to the range that its header declares.
/// Format: docs/format.md, 14 Output samples.
template <class T>
class SampleLimit {
public:
    /// bits: significant bits of a sample, counted modulo 32; no limit when 0 or less.
    explicit SampleLimit(int bits)
        : outside(bits <= 0 ? Unsigned{0} : static_cast<Unsigned>(~lastInside(bits))),
          greatest(static_cast<T>(lastInside(bits))) {}

    T apply(T sample) const {
        if ((static_cast<Unsigned>(sample) & outside) == 0) return sample;
        return sample < 0 ? T{0} : greatest;
    }

private:
    using Unsigned = std::make_unsigned_t<T>;

    static std::uint32_t lastInside(int bits) { return (std::uint32_t{1} << (bits & 31)) - 1; }

    /// Bits that no sample inside the range has, in the width of T: 16 bits limit a short to
    /// nothing.
    Unsigned outside;
    T greatest;
};

/// Writes one row of image, samples of a pixel side by side, each limited and narrowed to P.
/// Requires: out holds image.x * image.planes samples of type P, at any address; 0 <= r < image.y.
template <class P, class T>
void interleaveRow(const CImageData<T>& image, int r, const SampleLimit<T>& limit, void* out) {
    const std::size_t pixelBytes = static_cast<std::size_t>(image.planes) * sizeof(P);
    for (int p = 0; p < image.planes; ++p) {
        const T* row = image.row(p, r);
        auto* bytes = static_cast<unsigned char*>(out) + static_cast<std::size_t>(p) * sizeof(P);
        for (int c = 0; c < image.x; ++c, bytes += pixelBytes) {
            const P sample = static_cast<P>(limit.apply(row[c]));
            std::memcpy(bytes, &sample, sizeof sample);
        }
    }
}

/// Returns: the bytes of a row of image in the layout that bytesPerPixel names: 1 and 2 for planes
/// of 8 and 16 bits, 3 for 3 planes of 8 bits with the colour transform undone; 0 when image does
/// not have that layout.
template <class T>
std::size_t outputRowBytes(const CImageData<T>& image, int bytesPerPixel);

/// Writes one row of image in that layout. Requires: out holds outputRowBytes bytes, not 0;
/// 0 <= r < image.y.
template <class T>
void convertRow(const CImageData<T>& image, int r, int bytesPerPixel, const SampleLimit<T>& limit,
                void* out);

extern template std::size_t outputRowBytes<short>(const CImageData<short>&, int);
extern template std::size_t outputRowBytes<int>(const CImageData<int>&, int);
extern template void convertRow<short>(const CImageData<short>&, int, int,
                                       const SampleLimit<short>&, void*);
extern template void convertRow<int>(const CImageData<int>&, int, int, const SampleLimit<int>&,
                                     void*);

}  // namespace qmx
