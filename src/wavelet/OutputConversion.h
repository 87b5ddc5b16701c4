#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <type_traits>

#include "image/CImageData.h"
#include "image/PixelKernels.h"

namespace qmx {

/// Limits the samples of a stream that was cut to the range that its header declares.
/// Format: docs/format.md, 14 Output samples.
template <class T>
class SampleLimit {
public:
    /// bits: significant bits of a sample, counted modulo 32; no limit when 0 or less, or when they
    /// fill the width of T.
    explicit SampleLimit(int bits) : allowed(rangeOf(bits)) {}

    T apply(T sample) const { return std::clamp(sample, allowed.least, allowed.greatest); }
    const SampleRange<T>& range() const { return allowed; }

private:
    static SampleRange<T> rangeOf(int bits) {
        using Unsigned = std::make_unsigned_t<T>;
        const std::uint32_t lastInside = (std::uint32_t{1} << (bits & 31)) - 1;
        // Bits that no sample inside the range has, in the width of T.
        const auto outside = static_cast<Unsigned>(~lastInside);
        if (bits <= 0 || outside == 0)
            return {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()};
        return {T{0}, static_cast<T>(lastInside)};
    }

    SampleRange<T> allowed;
};

/// Writes one row of image, samples of a pixel side by side, each limited and narrowed to P, one by
/// one.
template <class P, class T>
void interleaveSamples(const CImageData<T>& image, int r, const SampleLimit<T>& limit,
                       unsigned char* out) {
    const std::size_t pixelBytes = static_cast<std::size_t>(image.planes) * sizeof(P);
    for (int p = 0; p < image.planes; ++p) {
        const T* row = image.row(p, r);
        unsigned char* bytes = out + static_cast<std::size_t>(p) * sizeof(P);
        for (int c = 0; c < image.x; ++c, bytes += pixelBytes) {
            const P sample = static_cast<P>(limit.apply(row[c]));
            std::memcpy(bytes, &sample, sizeof sample);
        }
    }
}

/// The same, by kernels where there is one.
/// Requires: out holds image.x * image.planes samples of type P, at any address; 0 <= r < image.y.
template <class P, class T>
void interleaveRow(const CImageData<T>& image, int r, const SampleLimit<T>& limit, void* out) {
    constexpr bool kIsByte = std::is_same_v<P, unsigned char>;
    const PixelKernels& kernels = activePixelKernels();
    const auto& range = limit.range();
    auto* samples = static_cast<unsigned char*>(out);
    const auto count = static_cast<std::size_t>(image.x);
    if constexpr (kIsByte && std::is_same_v<T, short>) {
        if (image.planes == 1) return kernels.narrowToBytes(samples, image.row(0, r), count, range);
        if (image.planes == 3)
            return kernels.joinBytes(samples, colourRows<const T>(image, r).data(), count, range);
    } else if constexpr (!kIsByte && std::is_same_v<T, short>) {
        if (image.planes == 1) return kernels.limitShorts(samples, image.row(0, r), count, range);
    } else if constexpr (!kIsByte) {
        if (image.planes == 1)
            return kernels.narrowToShorts(samples, image.row(0, r), count, range);
    }
    interleaveSamples<P>(image, r, limit, samples);
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
