#include "info/CFirstPicture.h"

#include <algorithm>

namespace qmx {

void CFirstPicture::add(const PlacedSection& section) {
    const SectionHeader& header = section.header;
    const bool isInTable = section.bitPlane >= 0 && section.bitPlane < kTableBitPlanes<int>;
    if (header.order != coarsestOrder || section.isCut() || !isInTable) return;
    Ends& ends = endsOfPlanes[static_cast<std::size_t>(header.plane)];
    auto& endsOfKind = header.isRefinement ? ends.refinement : ends.significance;
    endsOfKind[static_cast<std::size_t>(section.bitPlane)] = section.endBit();
    if (!header.isRefinement && !section.isEmpty())
        highestBitPlane = std::max(highestBitPlane, section.bitPlane);
}

std::uint64_t CFirstPicture::endBit() const {
    if (highestBitPlane < 0) return 0;
    const std::int64_t lowest =
        std::max<std::int64_t>(highestBitPlane + 1 - kFirstPicturePlanes, 0);
    std::uint64_t last = 0;
    for (int c = 0; c < planeCount; ++c) {
        const Ends& ends = endsOfPlanes[static_cast<std::size_t>(c)];
        for (auto p = static_cast<std::size_t>(lowest);
             p <= static_cast<std::size_t>(highestBitPlane); ++p) {
            const bool isHighest = p == static_cast<std::size_t>(highestBitPlane);
            if (ends.significance[p] == 0 || (!isHighest && ends.refinement[p] == 0)) return 0;
            last = std::max({last, ends.significance[p], isHighest ? 0 : ends.refinement[p]});
        }
    }
    return last;
}

}  // namespace qmx
