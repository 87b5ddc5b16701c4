#include "coding/encode/CRowLines.h"

#include "image/LinePitch.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

template <class T>
CRowLines<T>::CRowLines(const ImageShape& shape, int levelCount, CImageData<T>& firstRows,
                        int plane, CPlaneEncoder<T>& planeEncoder,
                        std::pmr::memory_resource* memory)
    : encoder(planeEncoder), levelsUsed(levelCount) {
    // The row of the coarsest order is no longer than that.
    const std::size_t longest = pitchSamples<T>(static_cast<std::size_t>(shape.width));
    std::size_t samples = kSpareSamples<T> + longest;
    for (int l = 0; l < levelsUsed; ++l) {
        const LevelGeometry geometry{shape.width, shape.height, 1 << l};
        Level& level = levels[l];
        level.rows = geometry.samplesPerColumn();
        level.columns = static_cast<std::size_t>(geometry.samplesPerRow());
        level.filteredColumns = static_cast<std::size_t>(geometry.filteredColumns());
        level.pitch = static_cast<std::ptrdiff_t>(pitchSamples<T>(level.columns));
        if (l > 0) samples += kRows * static_cast<std::size_t>(level.pitch);
    }
    storage = makeArray<T>(samples, memory);
    lowPass = alignToCacheLine(storage.get());
    T* next = lowPass + longest;
    for (int l = 1; l < levelsUsed; ++l) {
        levels[l].first = next;
        next += kRows * levels[l].pitch;
    }
    levels[0].first = firstRows.row(plane, 0);
    levels[0].pitch = firstRows.stride;
}

template class CRowLines<short>;
template class CRowLines<int>;

}  // namespace qmx
