#pragma once

#include <cstdint>

#include "container/TKHeader.h"

namespace qmx {

/// The last number of a command line may suspend a coefficient coder behind a row, from which it goes on at
/// once, and with that row in all later colour planes (Quirk 5): it does not meet the number again (Quirk 10).
/// Returns: the row with which it goes on; 0 when it is not suspended.
inline int rowBehindSuspension(int extra, const TKHeader& header) {
    const std::int64_t row = -std::int64_t{extra};
    return row > 0 && row < header.ySize ? static_cast<int>(row) + 1 : 0;
}

}  // namespace qmx
