#include "wavelet/CLevelLines.h"

#include <algorithm>
#include <bit>
#include <type_traits>

namespace qmx {

template <class T>
CLevelLines<T>::CLevelLines(const LevelGeometry& finest, int levelCount, CImageData<T>& ring,
                            int plane, std::pmr::memory_resource* memory)
    : levelsUsed(levelCount), ringMask(ring.y - 1) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    for (int l = 0; l < levelsUsed; ++l)
        levels[l].slots = kSlots * lastGroup(l) + kSlotsOfLastGroup;
    const auto count = static_cast<std::size_t>(levelsUsed);
    storage = layOutLines(std::span(levels, count), finest, ring, plane, memory);
}

template <class T>
int CLevelLines<T>::slotOf(int level, int r) const {
    const auto row = static_cast<unsigned>(r);
    const int last = lastGroup(level);
    // Row 0 belongs to all levels.
    const int group = std::min(std::countr_zero(row | 1U << kMaxLevels), last);
    if (group < last) return kSlots * group + static_cast<int>((row >> (group + 1)) % kSlots);
    return kSlots * group + static_cast<int>((row >> group) % kSlotsOfLastGroup);
}

template class CLevelLines<short>;
template class CLevelLines<int>;

}  // namespace qmx
