#pragma once

#include <algorithm>
#include <cstdint>
#include <type_traits>

#include "bitstream/WordBytes.h"

namespace qmx {

// A folded value holds the sign in bit 0 and the magnitude above it.
// Format: docs/format.md, 8 Folded values and top plane.

/// Returns: the folded form of a coefficient, narrowed to T. One that wraps comes out negative and
/// then counts as magnitude 0.
template <class T>
constexpr T fold(T coefficient) {
    using Unsigned = std::make_unsigned_t<T>;
    const auto x = static_cast<Unsigned>(coefficient);
    const bool negative = coefficient < 0;
    const auto magnitude = static_cast<Unsigned>(negative ? 0U - x : x);
    return static_cast<T>(static_cast<Unsigned>(magnitude << 1) | Unsigned{negative});
}

/// Returns: the coefficient of a folded value, narrowed to T.
template <class T>
constexpr T unfold(std::uint64_t folded) {
    const std::uint64_t magnitude = folded >> 1;
    return static_cast<T>((folded & 1) != 0 ? 0 - magnitude : magnitude);
}

/// Returns: the highest magnitude bit that is set in the union of all folded values, 0 when there
/// is none, 61 when the union's own sign bit is set (Quirk 13).
template <class T>
constexpr int topPlaneOf(T unionOfFolded) {
    const auto widened = static_cast<std::uint64_t>(static_cast<std::int64_t>(unionOfFolded));
    return std::max(0, bitLength(2 * widened + 1) - 3);
}

}  // namespace qmx
