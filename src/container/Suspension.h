#pragma once

#include <cstdint>

#include "container/TKHeader.h"

namespace qmx {

/// The last number of a command line: below 0, it suspends the coefficient coder behind row
/// -rowOrSections. The coder goes on at once, with the next row, and begins all later colour planes with
/// that row (Quirk 5). It is not suspended again (Quirk 10).
/// Returns: the row with which it goes on; 0 when it is not suspended.
inline int rowBehindSuspension(int rowOrSections, const TKHeader& header) {
    const std::int64_t row = -std::int64_t{rowOrSections};
    return row > 0 && row < header.ySize ? static_cast<int>(row) + 1 : 0;
}

}  // namespace qmx
