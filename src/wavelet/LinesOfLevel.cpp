#include "wavelet/LinesOfLevel.h"

#include "image/LinePitch.h"

namespace qmx {

template <class T>
MemoryArray<T> layOutLines(std::span<LinesOfLevel<T>> levels, const LevelGeometry& finest,
                           CImageData<T>& ring, int plane, std::pmr::memory_resource* memory) {
    std::size_t samples = kSpareSamples<T>;
    for (std::size_t l = 0; l < levels.size(); ++l) {
        const LevelGeometry geometry{finest.width, finest.height, finest.step << l};
        LinesOfLevel<T>& level = levels[l];
        level.rows = geometry.samplesPerColumn();
        level.columns = static_cast<std::size_t>(geometry.samplesPerRow());
        level.filteredColumns = static_cast<std::size_t>(geometry.filteredColumns());
        if (l == 0) continue;
        const std::size_t pitch = pitchSamples<T>(level.columns);
        level.pitch = static_cast<std::ptrdiff_t>(pitch);
        samples += static_cast<std::size_t>(level.slots) * pitch;
    }
    levels[0].first = ring.row(plane, 0);
    levels[0].pitch = ring.stride;
    if (levels.size() == 1) return {};
    MemoryArray<T> storage = makeArray<T>(samples, memory);
    T* next = alignToCacheLine(storage.get());
    for (LinesOfLevel<T>& level : levels.subspan(1)) {
        level.first = next;
        next = level.line(level.slots);
    }
    return storage;
}

template MemoryArray<short> layOutLines<short>(std::span<LinesOfLevel<short>>, const LevelGeometry&,
                                               CImageData<short>&, int, std::pmr::memory_resource*);
template MemoryArray<int> layOutLines<int>(std::span<LinesOfLevel<int>>, const LevelGeometry&,
                                           CImageData<int>&, int, std::pmr::memory_resource*);

}  // namespace qmx
