#include "coding/encode/CRowLines.h"

namespace qmx {

template <class T>
CRowLines<T>::CRowLines(const ImageShape& shape, int levelCount, CImageData<T>& firstRows,
                        int plane, CPlaneEncoder<T>& planeEncoder,
                        std::pmr::memory_resource* memory)
    : encoder(planeEncoder), levelsUsed(levelCount) {
    for (int l = 0; l < levelsUsed; ++l)
        levels[l].slots = kRows;
    levels[levelsUsed].slots = 1;
    const auto count = static_cast<std::size_t>(levelsUsed) + 1;
    const LevelGeometry finest{shape.width, shape.height, 1};
    storage = layOutLines(std::span(levels, count), finest, firstRows, plane, memory);
}

template class CRowLines<short>;
template class CRowLines<int>;

}  // namespace qmx
