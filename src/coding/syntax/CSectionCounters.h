#pragma once

#include <cstdint>

#include "coding/syntax/CSectionTable.h"

namespace qmx {

/// The bit planes that the next sections of a colour plane and order carry. A section does not name
/// its bit plane, so both sides count. Damaged streams may drive the counters below 0.
class CSectionCounters {
public:
    /// Starts all counters for streams with the given top plane.
    void reset(int topPlane) {
        for (auto& plane : next)
            for (auto& order : plane)
                order = {topPlane, std::int64_t{topPlane} - 1};
    }

    std::int64_t significance(int plane, int order) const {
        return next[plane][order].significance;
    }
    std::int64_t refinement(int plane, int order) const { return next[plane][order].refinement; }

    /// Returns: the bit plane of the section that is sent or has arrived, and counts it.
    std::int64_t take(int plane, int order, bool isRefinement) {
        NextPlanes& planes = next[plane][order];
        return isRefinement ? planes.refinement-- : planes.significance--;
    }

private:
    /// Of the next n section and of the next u section.
    struct NextPlanes {
        std::int64_t significance;
        std::int64_t refinement;
    };
    NextPlanes next[kTablePlanes][kMaxOrders];
};

}  // namespace qmx
