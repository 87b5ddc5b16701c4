#pragma once

#include <cstddef>

#include "image/KernelTables.h"

namespace qmx {

/// What the transform of a plane does with whole rows. Rows stand at any address and do not overlap;
/// exactly the samples that are named are read and written. Values wrap as docs/format.md, 6.1 and
/// 6.2 say.
template <class T>
struct LiftingKernels {
    static const LiftingKernels scalar, avx2, avx512;

    /// Filters one line in place. Requires: samples >= 4.
    void (*filterLine)(T* line, std::size_t samples);
    /// Undoes filterLine for a line of any length, whose evens and odds stand apart. What becomes of the evens
    /// differs between levels.
    void (*joinLine)(T* line, T* evens, const T* odds, std::size_t samples);
    /// A step down the columns:
    /// detail -= half(smooth + smoothAfter), then smooth += quarter(detailBefore + detail).
    void (*filterRows)(T* smooth, T* detail, const T* detailBefore, const T* smoothAfter,
                       std::size_t columns);
    /// A step back down the columns:
    /// smooth -= quarter(detailBefore + detail), then detailBefore += half(smoothBefore + smooth).
    void (*unfilterRows)(T* smooth, T* detailBefore, const T* smoothBefore, const T* detail,
                         std::size_t columns);
};

extern template struct LiftingKernels<short>;
extern template struct LiftingKernels<int>;

}  // namespace qmx
