#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "image/CImageData.h"
#include "image/PixelKernels.h"

namespace qmx {

// Rows of raw pixels to rows of planes and back, the colour transform included. Raw rows are bytes at any
// address. bytesPerPixel names their layout: 1 for one plane of 8 bits, 2 for one of 16, 3 for three
// interleaved planes of 8. Format: docs/format.md, 2 Raw images and 5 Colour transform.

/// Limits the samples of a stream that was cut to the range that its header declares.
/// Format: docs/format.md, 14 Output samples.
template <class T>
class CSampleLimit {
public:
    /// bits: significant bits of a sample, counted modulo 32; no limit when 0 or less, or when they
    /// fill the width of T.
    explicit CSampleLimit(int bits) : allowed(rangeOf(bits)) {}

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

/// Puts a raw row into row `slot` of rows. Requires: samples holds a row of rows.x pixels; rows has the
/// planes of bytesPerPixel; samples of int have 2 bytes.
template <class T>
void loadRow(CImageData<T>& rows, int slot, int bytesPerPixel, const unsigned char* samples);

/// Writes row `slot` of rows as a raw row: every sample is limited, then its low bits are written.
/// Requires: as above; samples has room for a row.
template <class T>
void storeRow(const CImageData<T>& rows, int slot, int bytesPerPixel, const CSampleLimit<T>& limit,
              unsigned char* samples);

extern template void loadRow<short>(CImageData<short>&, int, int, const unsigned char*);
extern template void loadRow<int>(CImageData<int>&, int, int, const unsigned char*);
extern template void storeRow<short>(const CImageData<short>&, int, int, const CSampleLimit<short>&,
                                     unsigned char*);
extern template void storeRow<int>(const CImageData<int>&, int, int, const CSampleLimit<int>&,
                                   unsigned char*);

}  // namespace qmx
