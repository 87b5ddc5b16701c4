#pragma once

#include <cstddef>
#include <cstdint>

#include "bitstream/RunCode.h"

namespace qmx {

// Format: docs/format.md, 10.2 n section and 11 Run code.

/// Stream bits that select an entry of the tables of runs: 28 KB.
inline constexpr int kLookUpBits = 11;
/// Candidates that the whole signed runs of an entry cover at most: the patterns of four entries fill one
/// byte-aligned store of 64 bits, those of two half a word.
inline constexpr int kLookUpCandidates = 14;
/// Bits of the suffix of a code whose zeros and one stand in a look-up behind a sign.
inline constexpr int kMostSuffixBits = suffixBits(kLookUpBits - 2, kRunParameter);

/// What stands in the next kLookUpBits bits of an n section: as many whole signed runs, a sign and the run
/// behind it, as there are, but for those that reach over kLookUpCandidates. The first candidate is
/// the new one that the sign belongs to, and the candidate behind the last, the open one, is new again.
struct RunLookUps {
    static constexpr std::size_t kEntries = std::size_t{1} << kLookUpBits;

    /// One bit for each candidate up to the open one: whether it is new; 32 bits higher, whether it is new and
    /// negative. The sign of the open one is 0 where it stands behind the bits.
    std::uint64_t patterns[kEntries];
    /// Stream bits that the whole signed runs take; 0 when there is none.
    std::uint8_t bits[kEntries];
    /// New candidates and the zeros that follow them, without the open one.
    std::uint8_t candidates[kEntries];

    /// The same with the signed run of the open candidate, where all of it but the suffix of its code stands in
    /// the bits. Otherwise without it, and suffixBits is 0.
    struct Extended {
        /// Candidates, without the value of the suffix.
        std::uint16_t candidates;
        /// Stream bits in front of the suffix; 0 when no signed run was passed.
        std::uint8_t bits;
        std::uint8_t suffixBits;
    };
    Extended extended[kEntries];
};

extern const RunLookUps kRunLookUps;

}  // namespace qmx
