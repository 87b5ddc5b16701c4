#pragma once

#include <cstdint>

#include "container/TKHeader.h"

namespace qmx {

// Format: docs/format.md, 12.2 Cutting at a budget.

/// Returns: value without its fraction as an unsigned number. Negative values wrap; NaN, infinities
/// and what no 64-bit number holds become 2^63, a budget that nothing exceeds.
std::uint64_t truncateToUnsigned(double value);

/// Returns: the bytes that a rate leaves for the stream behind the header. A rate of 0 means 1.5
/// times the raw size. Quirk 6: the raw size is a 32-bit number that wraps.
std::uint64_t streamBudgetBytes(const TKHeader& header, double rate);

/// Returns: a number of bytes that no complete stream of such an image needs, whatever its samples.
/// Requires: coefficientBits is 16 or 32, the width of the coefficients.
std::uint64_t completeStreamBoundBytes(const TKHeader& header, int coefficientBits);

}  // namespace qmx
