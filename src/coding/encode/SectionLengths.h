#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "coding/encode/ClosingRuns.h"

namespace qmx {

// How long the n sections of an order become, without coding them.
// Format: docs/format.md, 10.2 n section.

/// Magnitudes of folded values have up to this many bits here, more than any coefficient type holds.
inline constexpr int kMagnitudeBits = 32;

/// An n section.
struct SectionLength {
    /// With its last run; 0 without new coefficients.
    std::uint64_t bits = 0;
    std::uint64_t closingRun = 0;

    /// Returns: the length that is sent where sections of up to longestBits bits are possible.
    std::uint64_t sentBits(std::uint64_t longestBits, ClosingRuns closing) const;
};

/// Returns: the n sections of the order that has these folded values, one for each bit plane.
/// Requires: magnitudes of up to kMagnitudeBits bits.
std::array<SectionLength, kMagnitudeBits> significanceLengths(
    std::span<const std::uint64_t> foldedValues);

/// Returns: by how many bits the longest of these sections is too long.
std::uint64_t excessBits(std::span<const std::uint64_t> foldedValues, std::uint64_t longestBits,
                         ClosingRuns closing);

}  // namespace qmx
