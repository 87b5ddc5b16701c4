#pragma once

#include "coding/decode/SectionWindow.h"
#include "coding/syntax/ScanOrder.h"
#include "image/CpuLevel.h"

namespace qmx {

/// Decoding of coefficients in groups of 64. All levels store the same coefficients and leave the
/// same state, so a level may go on where another one has stopped.
/// Format: docs/format.md, 13.2 Coefficients and 13.3 Rounding of cut coefficients.
template <class T>
struct DecodeKernels {
    /// Stores the coefficients that line names into a row of width samples, which are 0 before.
    /// Requires: the sections of one colour plane and the line's order. Throws: std::bad_alloc, when
    /// a reader needs its file window; the sections are then of no more use.
    void (*decodeLine)(OrderWindows<T>& sections, T* row, const ScanLine& line, int width);
};

/// Returns: the kernels of a level. Requires: the processor has it.
template <class T>
const DecodeKernels<T>& decodeKernels(CpuLevel level);

extern template const DecodeKernels<short>& decodeKernels<short>(CpuLevel);
extern template const DecodeKernels<int>& decodeKernels<int>(CpuLevel);

// The tables of the levels, one file each; all others get them from decodeKernels.
extern const DecodeKernels<short> kDecodeShortAvx2;
extern const DecodeKernels<int> kDecodeIntAvx2;
extern const DecodeKernels<short> kDecodeShortAvx512;
extern const DecodeKernels<int> kDecodeIntAvx512;

}  // namespace qmx
