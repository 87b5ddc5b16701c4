#pragma once

#include <cstddef>

#include "image/KernelTables.h"

namespace qmx {

/// The samples that output may hold; others become the nearest of these.
template <class T>
struct SampleRange {
    T least;
    T greatest;
};

/// Rows of planes to and from rows of raw pixels. Rows stand at any address and do not overlap; count
/// counts pixels; exactly what is named is read and written. Raw samples of 16 bits are passed as
/// bytes, because they need not be aligned. Format: docs/format.md, 2, 5 and 14.
struct PixelKernels {
    static const PixelKernels scalar, avx2, avx512;

    // Input: samples are widened without sign.

    /// One plane of bytes.
    void (*widenBytes)(short* row, const unsigned char* samples, std::size_t count);
    /// One plane of 16-bit samples.
    void (*widenShorts)(int* row, const unsigned char* samples, std::size_t count);
    /// Three planes of bytes.
    void (*separateBytes)(short* const rows[3], const unsigned char* samples, std::size_t count);
    /// The same with the forward colour transform.
    void (*separateColours)(short* const rows[3], const unsigned char* samples, std::size_t count);

    // Output: samples are limited to a range, then their low bits are written.

    void (*narrowToBytes)(unsigned char* samples, const short* row, std::size_t count,
                          SampleRange<short> range);
    void (*limitShorts)(unsigned char* samples, const short* row, std::size_t count,
                        SampleRange<short> range);
    void (*narrowToShorts)(unsigned char* samples, const int* row, std::size_t count,
                           SampleRange<int> range);
    /// Three planes to bytes, after the inverse colour transform, whose results wrap to 16 bits before the
    /// range.
    void (*joinColours)(unsigned char* samples, const short* const rows[3], std::size_t count,
                        SampleRange<short> range);
};

}  // namespace qmx
