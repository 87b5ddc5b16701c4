#include "wavelet/CRowRestorer.h"

#include <algorithm>
#include <bit>

#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

int sweptLevels(const ImageShape& shape) {
    return std::max(levelCount(shape.width, shape.height), 1);
}

/// Returns: how many rows of coefficients behind row r have to be there when row r is restored.
///
/// To restore row r, a level needs its rows up to r + 3: the smooth row r + 2, and the detail row behind
/// it. The smooth one is row (r + 2) / 2 of the next level, whose rows are two apart here. So
/// ahead(1) = 3 and ahead(n) = 2 + 2 ahead(n - 1):
///
///     levels       1   2   3   4   5
///     rows ahead   3   8  18  38  78
int aheadFor(int levels) {
    return (5 << (levels - 1)) - 2;
}

/// Rows that a sweep still reads in front of the one that it restores, and those of its last step.
constexpr int kRowsBehind = 8;

/// Returns: a power of two, so that a row is found by a mask.
int ringRows(const ImageShape& shape) {
    const int rows = std::min(shape.height, aheadFor(sweptLevels(shape)) + kRowsBehind);
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(rows)));
}

}  // namespace

template <class T>
CRowRestorer<T>::CRowRestorer(const ImageShape& imageShape, std::pmr::memory_resource* memory)
    : shape(imageShape),
      rowsAhead(aheadFor(sweptLevels(shape))),
      ring(shape.width, ringRows(shape), shape.planes, memory) {
    for (int p = 0; p < shape.planes; ++p)
        planes[p] = makeObject<Plane>(memory, shape, sweptLevels(shape), ring, p, memory);
}

template class CRowRestorer<short>;
template class CRowRestorer<int>;

}  // namespace qmx
