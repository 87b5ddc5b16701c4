#pragma once

#include <cstdint>
#include <memory_resource>
#include <vector>

namespace qmx {

/// Folded values of one order, in scan order. Magnitudes may be wider than the coefficient type.
using FoldedValues = std::pmr::vector<std::uint64_t>;

/// What happens to the last runs of the n sections that would otherwise be too long. A decoder needs
/// no run behind the last coefficient of an order, whatever it reads there.
/// Format: docs/format.md, 15 Images that do not come back.
enum class ClosingRuns {
    written,
    /// Those that are 0 are left out: nothing follows them.
    zerosLeftOut,
    /// All are left out. One that is not 0 is then read from the header of the next section, which
    /// has to begin with enough zero bits.
    leftOut,
};

/// Returns: whether closing leaves out a run.
constexpr bool leavesOut(ClosingRuns closing, std::uint64_t run) {
    return closing == ClosingRuns::leftOut || (closing == ClosingRuns::zerosLeftOut && run == 0);
}

}  // namespace qmx
