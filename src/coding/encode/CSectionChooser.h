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

/// Finds the section that is worth most for its bits among those that may come next. What an order has to
/// offer is found out again only when one of its sections was taken.
/// Format: docs/format.md, 12.1 Priority.
template <class T>
class CSectionChooser {
public:
    /// For sections up to topPlane. Requires: coderStreams are those of so many colour planes and levels, and
    /// outlive this object.
    CSectionChooser(EncoderStreams<T>& coderStreams, int planes, int levels, int topPlane)
        : streams(coderStreams) {
        counters.reset(topPlane);
        for (int p = 0; p < planes; ++p)
            for (int o = 0; o <= levels; ++o)
                findOffer(p, o);
    }

    /// Returns: the choice among the first colour planes and orders, or nothing when all their sections
    /// have been taken. On a tie the earlier plane, the lower order and the n section win.
    std::optional<SectionChoice> choose(int planes, int levels) const {
        SectionChoice choice{};
        double best = 0.0;
        for (int p = 0; p < planes; ++p)
            for (int o = 0; o <= levels; ++o)
                if (const Offer& offer = offers[p][o]; offer.value > best) {
                    best = offer.value;
                    choice = {p, o, offer.isRefinement};
                }
        if (best == 0.0) return std::nullopt;
        return choice;
    }

    /// Takes a section that was chosen. Returns: its bit plane.
    int take(const SectionChoice& section) {
        const auto [plane, order, isRefinement] = section;
        const std::int64_t bitPlane = counters.take(plane, order, isRefinement);
        findOffer(plane, order);
        return static_cast<int>(bitPlane);
    }

private:
    /// The better one of the next n and u section of an order; its value is 0 when there is none.
    struct Offer {
        double value;
        bool isRefinement;
    };

    void findOffer(int p, int o) {
        const auto n = static_cast<int>(counters.significance(p, o));
        const auto u = static_cast<int>(counters.refinement(p, o));
        const double nValue = n >= 0 ? significance(p, o, n) : 0.0;
        // A u section refines coefficients that an n section above it has announced.
        const double uValue = u >= std::max(n, 0) ? refinementValue(p, o, u) : 0.0;
        offers[p][o] = {std::max(nValue, uValue), uValue > nValue};
    }

    double significance(int p, int o, int bitPlane) {
        // Bit planes outside the tables are empty.
        if (bitPlane >= kTableBitPlanes<T>) return significanceValue(p, o, bitPlane, 0, 0);
        const PlaneSections& sections = streams.of(p, o).bitPlanes[bitPlane];
        // A section without new coefficients is as good as empty, even if its run was spelled out.
        return significanceValue(p, o, bitPlane, sections.newCount,
                                 sections.newCount == 0 ? 0 : sections.significanceBits());
    }

    EncoderStreams<T>& streams;
    CSectionCounters counters;
    Offer offers[kTablePlanes][kMaxOrders];
};

}  // namespace qmx
