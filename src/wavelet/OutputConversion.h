#pragma once

#include <cstdint>
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
/// Requires: out holds image.x * image.planes samples; 0 <= r < image.y.
template <class T, class P>
void interleaveRow(const CImageData<T>& image, int r, const SampleLimit<T>& limit, P* out) {
    for (int p = 0; p < image.planes; ++p) {
        const T* row = image.row(p, r);
        P* sample = out + p;
        for (int c = 0; c < image.x; ++c, sample += image.planes)
            *sample = static_cast<P>(limit.apply(row[c]));
    }
}

}  // namespace qmx
