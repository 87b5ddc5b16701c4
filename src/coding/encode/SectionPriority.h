#pragma once

#include <cstdint>

namespace qmx {

// How useful a section is for each bit that it costs. Ties and near-ties are decided by the last
// bit of these doubles, so the order of operations is part of the format.
// Format: docs/format.md, 12.1 Priority.

/// Returns: the value of the n section of a bit plane with newCount new coefficients in storedBits
/// bits. Requires: 0 <= bitPlane + order <= 66.
double significanceValue(int plane, int order, int bitPlane, std::uint64_t newCount,
                         std::uint64_t storedBits);

/// Returns: the value of the u section of a bit plane. Requires: as above.
double refinementValue(int plane, int order, int bitPlane);

}  // namespace qmx
