#pragma once

#include <memory_resource>
#include <vector>

#include "coding/decode/DecodeKernels.h"
#include "coding/syntax/CSectionCounters.h"
#include "image/CImageData.h"

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
    /// Takes the current runs from the decoders; the windows fit a plane of so many samples.
    /// Requires: streams and memory outlive this object; every bit plane between the counters and the top
    /// plane that the tables hold has its decoder attached. Throws: std::bad_alloc.
    CPlaneDecoder(DecoderStreams<T>& streams, const CSectionCounters& counters, int plane,
                  int topPlane, int levelCount, std::uint64_t samplesPerPlane,
                  std::pmr::memory_resource* memory);

    /// Stores the coefficients of row `row` into width samples, which are 0 before. Requires: rows
    /// come in rising order. Throws: std::bad_alloc, when a reader needs its file window.
    void decodeRow(const DecodeKernels<T>& kernels, int row, T* samples, int width);

private:
    int levels;
    std::pmr::vector<OrderWindows<T>> orders;
    /// Of all windows.
    std::pmr::vector<unsigned char> bitmaps;
};

extern template class CPlaneDecoder<short>;
extern template class CPlaneDecoder<int>;

}  // namespace qmx
