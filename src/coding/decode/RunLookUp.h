#pragma once

#include <array>
#include <cstdint>

namespace qmx {

// Format: docs/format.md, 10.2 n section and 11 Run code.

/// Stream bits that select an entry of the table of runs: 16 KB. Measured (2026-11-21): 12 bits would
/// gain 2 % for 32 KB, all of some first-level caches; 10 bits lose 13 %.
inline constexpr int kLookUpBits = 11;
/// Candidates that an entry covers at most: four entries fill one byte-aligned store of 64 bits.
inline constexpr int kLookUpCandidates = 14;

/// Look-ups whose bits fit in one load and whose candidates fit in one store.
inline constexpr int kLookUps = 4;

/// As many whole signed runs, a sign and the run behind it, as stand in the next kLookUpBits bits of an
/// n section. The first candidate is the new one that the sign belongs to, and the candidate behind
/// the last is new again. All fields are 0 when no signed run fits.
struct RunLookUp {
    /// Stream bits that the signed runs take.
    std::uint8_t bits;
    /// New candidates and the zeros that follow them.
    std::uint8_t candidates;
    /// One bit for each candidate: whether it is new, whether it is new and negative.
    std::uint16_t fresh;
    std::uint16_t negatives;
    std::uint16_t padding;
};

using RunLookUps = std::array<RunLookUp, std::size_t{1} << kLookUpBits>;
extern const RunLookUps kRunLookUps;

}  // namespace qmx
