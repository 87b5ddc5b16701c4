#pragma once

#include <array>
#include <cstdint>

#include "coding/ScanOrder.h"
#include "wavelet/CoderStreams.h"

namespace qmx {

/// Where the sections of a colour plane and order that have arrived end: bit planes above `n` have
/// their n section, bit planes above `u` their u section.
struct ReceivedPlanes {
    int top;
    std::int64_t n;
    std::int64_t u;
};

/// Gathers the coefficients of one colour plane and order from the coders of their bit planes.
/// Format: docs/format.md, 13.2 Coefficients.
///
/// Plain way: for each coefficient, from the top plane down, the run of each coder is lowered by 1,
/// until one is used up: there the coefficient is new. Here all coefficients of the order are
/// counted once (`position`), and for each bit plane `nextNew` is the position at which its run
/// will be used up if no coefficient before is new in a higher plane; each one that is moves it up
/// by one. All coefficients before the smallest nextNew are 0, and nothing is touched for them.
template <class T>
class OrderDecoder {
public:
    /// Takes the current runs from the decoders. Requires: streams outlives this object;
    /// 0 <= plane < 4; 0 <= order < 6; every bit plane between received.n and received.top that the
    /// tables hold has its decoder attached.
    OrderDecoder(DecoderStreams<T>& streams, int plane, int order, const ReceivedPlanes& received);

    /// Stores the coefficients that line names into a row of width samples that holds zeros.
    /// Throws: std::bad_alloc, when a reader needs its file window.
    void decodeLine(T* row, const ScanLine& line, int width);

    /// Gives the decoders their current runs back.
    void storeRuns();

private:
    std::uint64_t decodeNew();
    std::uint64_t refine(std::uint64_t folded, int newPlane);
    void findNextNew();

    CBitDecoder* decoders;
    CBitInfiniteReader* refinements;
    /// The bit planes that have a decoder, inclusive; none when highest < lowest.
    int highest;
    int lowest;
    std::int64_t unrefined;
    std::uint64_t position = 0;
    std::uint64_t soonest;
    std::array<std::uint64_t, kTableBitPlanes<T>> nextNew;
};

extern template class OrderDecoder<short>;
extern template class OrderDecoder<int>;

}  // namespace qmx
