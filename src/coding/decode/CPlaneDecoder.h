#pragma once

#include <memory_resource>
#include <vector>

#include "coding/decode/CReceivedSections.h"
#include "coding/decode/DecodeKernels.h"

namespace qmx {

/// Gathers the coefficients of one colour plane, row by row, from the coders of its sections.
/// Format: docs/format.md, 13.2 Coefficients.
///
/// Plain way: for each coefficient, from the top plane down, lower the run of each n section by 1,
/// until one is used up: there the coefficient is newly significant. Here each n section is parsed ahead
/// into a window that says which of its candidates become significant, and 64 coefficients are gathered at
/// a time; see DecodeKernels.
template <class T>
class CPlaneDecoder {
public:
    /// Takes the current runs from the decoders of the plane.
    /// Requires: sections.read has returned 0 or 4; sections, their reader and their memory outlive this
    /// object; 0 <= plane < sections.shape().planes. Throws: std::bad_alloc.
    CPlaneDecoder(CReceivedSections<T>& sections, int plane);

    /// Stores the coefficients of row `row` into as many samples as the image is wide, where CRowRestorer wants
    /// them. Requires: rows come in rising order. Throws: std::bad_alloc, when a reader needs
    /// its file window.
    void decodeRow(int row, T* samples);

private:
    const DecodeKernels<T>* kernels;
    int levels;
    int restoredLevels;
    int width;
    std::pmr::vector<OrderWindows<T>> orders;
    /// Of all windows.
    std::pmr::vector<unsigned char> bitmaps;
};

extern template class CPlaneDecoder<short>;
extern template class CPlaneDecoder<int>;

}  // namespace qmx
