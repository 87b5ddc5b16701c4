#pragma once

#include <algorithm>
#include <optional>

#include "coding/encode/EncoderStreams.h"
#include "coding/encode/SectionPriority.h"
#include "coding/syntax/CSectionCounters.h"

namespace qmx {

/// The section that comes next; the counters say its bit plane.
struct SectionChoice {
    int plane;
    int order;
    bool isRefinement;
};

/// Finds the section that is worth most for its bits among those that may come next.
/// Format: docs/format.md, 12.1 Priority.
template <class T>
class CSectionChooser {
public:
    /// Requires: both outlive this object.
    CSectionChooser(EncoderStreams<T>& coderStreams, const CSectionCounters& sectionCounters)
        : streams(coderStreams), counters(sectionCounters) {}

    /// Returns: the choice, or nothing when all sections have been sent. On a tie the earlier
    /// plane, the lower order and the n section win.
    std::optional<SectionChoice> choose(int planes, int levels) {
        best = -1.0;
        for (int p = 0; p < planes; ++p)
            for (int o = 0; o <= levels; ++o)
                consider(p, o);
        if (best <= 0.0) return std::nullopt;
        return choice;
    }

private:
    void consider(int p, int o) {
        const auto n = static_cast<int>(counters.significance(p, o));
        const auto u = static_cast<int>(counters.refinement(p, o));
        if (n >= 0) offer(significance(p, o, n), {p, o, false});
        // A u section refines coefficients that an n section above it has announced.
        if (u >= std::max(n, 0)) offer(refinementValue(p, o, u), {p, o, true});
    }

    double significance(int p, int o, int bitPlane) {
        const auto* newCount = streams.newCounts.find(p, o, bitPlane);
        // A section without new coefficients is as good as empty, even if its run was spelled out.
        if (newCount == nullptr || *newCount == 0) return significanceValue(p, o, bitPlane, 0, 0);
        const CBitChunkEncoder& coder = streams.encoders.bitPlanes(p, o)[bitPlane];
        return significanceValue(p, o, bitPlane, *newCount, coder.getStoredTotal());
    }

    void offer(double value, const SectionChoice& candidate) {
        if (value <= best) return;
        best = value;
        choice = candidate;
    }

    EncoderStreams<T>& streams;
    const CSectionCounters& counters;
    double best = -1.0;
    SectionChoice choice{};
};

}  // namespace qmx
