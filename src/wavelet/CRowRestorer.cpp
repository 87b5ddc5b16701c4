#include "wavelet/CRowRestorer.h"

#include <algorithm>
#include <bit>

#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

int sweptLevels(const ImageShape& shape, int reduction) {
    return levelsToRestore(levelCount(shape.width, shape.height), reduction);
}

/// Returns: how many rows of coefficients behind row r have to be there when row r is restored.
///
/// To restore row r, a level needs its rows up to r + 3: the smooth row r + 2, and the detail row behind
/// it. The smooth one is row (r + 2) / 2 of the next level, whose rows are two apart here. So
/// ahead(1) = 3 and ahead(n) = 2 + 2 ahead(n - 1):
///
///     levels       0   1   2   3   4   5
///     rows ahead   0   3   8  18  38  78
int aheadFor(int levels) {
    return levels == 0 ? 0 : (5 << (levels - 1)) - 2;
}

/// Rows that a sweep still reads in front of the one that it restores, and those of its last step.
constexpr int kRowsBehind = 8;

/// Returns: a power of two, so that a row is found by a mask.
int ringRows(int height, int rowsAhead) {
    const int rows = std::min(height, rowsAhead + kRowsBehind);
    return static_cast<int>(std::bit_ceil(static_cast<unsigned>(rows)));
}

}  // namespace

template <class T>
CRowRestorer<T>::CRowRestorer(const ImageShape& imageShape, std::pmr::memory_resource* memory,
                              int reduction)
    : shape(imageShape.reducedBy(reduction)),
      rowsAhead(aheadFor(sweptLevels(imageShape, reduction))),
      ring(shape.width, ringRows(shape.height, rowsAhead), shape.planes, memory),
      restored(shape.width, 1, shape.planes, memory) {
    const int levels = sweptLevels(imageShape, reduction);
    const LevelGeometry finest{imageShape.width, imageShape.height, 1 << reduction};
    for (int p = 0; levels != 0 && p < shape.planes; ++p)
        sweeps[p] = makeObject<CInverseSweep<T>>(memory, finest, levels, ring, p, memory);
}

template class CRowRestorer<short>;
template class CRowRestorer<int>;

}  // namespace qmx
