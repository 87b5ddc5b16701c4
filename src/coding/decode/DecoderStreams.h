#pragma once

#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "coding/syntax/CSectionTable.h"

namespace qmx {

/// All coders of a decoder.
template <class T>
struct DecoderStreams {
    /// For the sections up to topPlane, as far as the coefficients have such bit planes, of an image of so
    /// many colour planes and levels. Requires: memory outlives the streams. Throws: std::bad_alloc.
    DecoderStreams(int planes, int levels, int topPlane, std::pmr::memory_resource* memory)
        : DecoderStreams(TableSize::of(planes, levels, std::min(topPlane + 1, kTableBitPlanes<T>)),
                         memory) {}

    /// Significance: run codes and signs of the n sections.
    CSectionTable<CBitDecoder> decoders;
    /// Where the bits of the n sections stand: each decoder reads from the element of its own
    /// plane, order and bit plane.
    CSectionTable<CBitInfiniteReader> significances;
    /// Refinement: raw bits of the u sections.
    CSectionTable<CBitInfiniteReader> refinements;

private:
    DecoderStreams(const TableSize& size, std::pmr::memory_resource* memory)
        : decoders(size, memory), significances(size, memory), refinements(size, memory) {}
};

}  // namespace qmx
