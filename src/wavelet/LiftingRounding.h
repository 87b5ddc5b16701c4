#pragma once

#include <cstdint>

namespace qmx {

// Format: docs/format.md, 6.1 Rounding. Sums are 32 bits wide and wrap; both divisions round to
// nearest, ties away from zero.

/// Returns: a + b as a 32-bit value that wraps.
constexpr std::int32_t wrappingSum(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

/// Returns: a - b as a 32-bit value that wraps.
constexpr std::int32_t wrappingDifference(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

// Plain way: add 1 (or 2) before the shift for s >= 0, and 0 (or 1) for s < 0. s >> 31 is 0 or -1,
// which makes the two cases one.

/// Returns: s / 2.
constexpr std::int32_t half(std::int32_t s) {
    return wrappingSum(s, 1 + (s >> 31)) >> 1;
}

/// Returns: s / 4.
constexpr std::int32_t quarter(std::int32_t s) {
    return wrappingSum(s, 2 + (s >> 31)) >> 2;
}

static_assert(half(3) == 2 && half(-3) == -2 && half(-1) == -1 && half(0) == 0);
static_assert(quarter(2) == 1 && quarter(-2) == -1 && quarter(-1) == 0 && quarter(-6) == -2);

}  // namespace qmx
