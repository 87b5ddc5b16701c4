#include "wavelet/CLevelLines.h"

#include <algorithm>
#include <bit>
#include <type_traits>

#include "image/LinePitch.h"

namespace qmx {
template <class T>
CLevelLines<T>::CLevelLines(const ImageShape& shape, int levelCount, CImageData<T>& ring, int plane,
                            std::pmr::memory_resource* memory)
    : levelsUsed(levelCount), ringMask(ring.y - 1) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    std::size_t samples = kSpareSamples<T>;
    for (int l = 0; l < levelsUsed; ++l) {
        const LevelGeometry geometry{shape.width, shape.height, 1 << l};
        Level& level = levels[l];
        level.rows = geometry.samplesPerColumn();
        level.columns = static_cast<std::size_t>(geometry.samplesPerRow());
        level.filteredColumns = static_cast<std::size_t>(geometry.filteredColumns());
        level.lastGroup = levelsUsed - 1 - l;
        level.pitch =
            l == 0 ? ring.stride : static_cast<std::ptrdiff_t>(pitchSamples<T>(level.columns));
        if (l > 0)
            samples +=
                static_cast<std::size_t>(level.slots()) * static_cast<std::size_t>(level.pitch);
    }
    levels[0].first = ring.row(plane, 0);
    if (levelsUsed == 1) return;
    storage = makeArray<T>(samples, memory);
    T* next = alignToCacheLine(storage.get());
    for (int l = 1; l < levelsUsed; ++l) {
        levels[l].first = next;
        next += levels[l].slots() * levels[l].pitch;
    }
}

template <class T>
int CLevelLines<T>::Level::slotOf(int r) const {
    const auto row = static_cast<unsigned>(r);
    // Row 0 belongs to all levels.
    const int group = std::min(std::countr_zero(row | 1U << kMaxLevels), lastGroup);
    if (group < lastGroup) return kSlots * group + static_cast<int>((row >> (group + 1)) % kSlots);
    return kSlots * group + static_cast<int>((row >> group) % kSlotsOfLastGroup);
}

template class CLevelLines<short>;
template class CLevelLines<int>;

}  // namespace qmx
