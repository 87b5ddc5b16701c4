#pragma once

#include "coding/decode/SectionWindow.h"
#include "image/KernelTables.h"

namespace qmx {

/// Decoding of coefficients in groups of 64. All levels store the same coefficients and leave the
/// same state, so a level may go on where another one has stopped.
/// Format: docs/format.md, 13.2 Coefficients and 13.3 Rounding of cut coefficients.
template <class T>
struct DecodeKernels {
    static const DecodeKernels scalar, avx2, avx512;

    /// Stores the next coefficients of an order: all to line, or where odds is not null every second one to odds.
    /// Requires: the sections of one colour plane and order. Throws: std::bad_alloc, when a reader needs its
    /// file window; the sections are then of no more use.
    void (*decodeLine)(OrderWindows<T>& sections, T* line, T* odds, int coefficients);
};

extern template struct DecodeKernels<short>;
extern template struct DecodeKernels<int>;

}  // namespace qmx
