#pragma once

#include <array>
#include <cstdint>

#include "coding/ScanOrder.h"
#include "wavelet/CoderStreams.h"

namespace qmx {

/// Spreads the folded coefficients of one colour plane and order over the coders of their bit
/// planes. Format: docs/format.md, 10 Sections.
///
/// Plain way: each coefficient that is not new at a bit plane, and not significant above it, adds 1
/// to the run of that plane's coder. Here no coder is touched that does not code: all coefficients
/// of the order are counted once (`position`), and for each bit plane `runStart` is the position at
/// which its current run would have begun had every coefficient since then belonged to it. So a
/// run is position - runStart, and a coefficient that is significant above the plane, which does
/// not belong to the run, moves runStart up by one. Only coefficients that are not 0 cost anything.
template <class T>
class OrderEncoder {
public:
    /// Takes the current runs from the coders. Requires: streams outlives this object;
    /// 0 <= plane < 4; 0 <= order < 6.
    OrderEncoder(EncoderStreams<T>& streams, int plane, int order);

    /// Encodes the coefficients that line names in a row of width folded values.
    /// Throws: std::bad_alloc.
    void encodeLine(const T* row, const ScanLine& line, int width);

    /// Encodes the next coefficient, whose magnitude may take all kTableBitPlanes<T> bits.
    /// Throws: std::bad_alloc.
    void encodeFolded(std::uint64_t folded);

    /// Gives the coders of the bit planes up to topPlane their current runs back, which callers of
    /// the coders may look at.
    void storeRuns(int topPlane);

private:
    void encode(std::uint64_t folded);

    CBitChunkEncoder* encoders;
    CBitChunkWriter* refinements;
    std::uint64_t* newCounts;
    std::uint64_t position = 0;
    std::array<std::uint64_t, kTableBitPlanes<T>> runStart;
};

extern template class OrderEncoder<short>;
extern template class OrderEncoder<int>;

}  // namespace qmx
