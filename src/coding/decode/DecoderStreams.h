#pragma once

#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "coding/syntax/CSectionTable.h"

namespace qmx {

/// In place of the end of a section that is not known.
inline constexpr std::uint64_t kNoEnd = std::uint64_t{1} << 62;

/// The sections of one bit plane.
struct PlaneReaders {
    /// Significance: run codes and signs of the n section, which `significance` reads.
    CBitDecoder decoder;
    CBitInfiniteReader significance;
    /// Refinement: raw bits of the u section.
    CBitInfiniteReader refinement;
    /// The total of `significance` behind the n section, if it stands in memory; kNoEnd otherwise.
    std::uint64_t significanceEnd = kNoEnd;
};

/// All coders of a decoder.
using DecoderStreams = CSectionTable<PlaneReaders>;

}  // namespace qmx
