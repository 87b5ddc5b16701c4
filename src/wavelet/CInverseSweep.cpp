#include "wavelet/CInverseSweep.h"

#include <algorithm>

#include "wavelet/LiftingSteps.h"

namespace qmx {

template <class T>
CInverseSweep<T>::CInverseSweep(const LevelGeometry& finest, int levelCount, CImageData<T>& ring,
                                int plane, std::pmr::memory_resource* memory)
    : kernels(activeKernels<LiftingKernels<T>>()),
      count(levelCount),
      firstRow(ring.row(plane, 0)),
      stride(ring.stride),
      ringMask(ring.y - 1) {
    for (int l = 0; l < count; ++l) {
        const LevelGeometry geometry{finest.width, finest.height, finest.step << l};
        levels[l].rows = geometry.samplesPerColumn();
        levels[l].columns = static_cast<std::size_t>(geometry.samplesPerRow());
        levels[l].filteredColumns = static_cast<std::size_t>(geometry.filteredColumns());
    }
    joined = makeArray<T>(evens(0), memory);
}

template <class T>
void CInverseSweep<T>::restoreRow(int r, T* out) {
    unfilterRowsUpTo(0, r);
    joinLine(0, r, out);
}

template <class T>
void CInverseSweep<T>::unfilterRowsUpTo(int level, int r) {
    int& next = levels[level].nextSmooth;
    // A step ends the columns of the two rows before its own ones, the last step those of these too.
    for (; next < levels[level].rows && next - 2 <= r; next += 2) {
        fillSmooth(level, next);
        unfilterColumns(level, next);
    }
}

/// Puts the row of the next level where its evens are.
template <class T>
void CInverseSweep<T>::fillSmooth(int level, int smoothRow) {
    const int next = level + 1;
    if (next == count) return;
    unfilterRowsUpTo(next, smoothRow / 2);
    joinLine(next, smoothRow / 2, joined.get());
    std::copy_n(joined.get(), levels[next].columns, line(level, smoothRow));
}

template <class T>
void CInverseSweep<T>::joinLine(int level, int r, T* out) const {
    T* const coefficients = line(level, r);
    kernels.joinLine(out, coefficients, coefficients + evens(level), levels[level].columns);
}

/// Undoes the updates of a smooth row and the predictions of the details before it; at the end of the
/// columns those of the details behind it.
template <class T>
void CInverseSweep<T>::unfilterColumns(int level, int smoothRow) {
    const Level& here = levels[level];
    if (here.rows < kShortestLine) return;
    // A last column that is left out is the last of the evens or of the odds.
    const std::size_t leftOut = here.columns - here.filteredColumns;
    const bool endsEven = here.columns % 2 != 0;
    unfilterColumns(level, smoothRow, 0, evens(level) - (endsEven ? leftOut : 0));
    unfilterColumns(level, smoothRow, evens(level), here.columns / 2 - (endsEven ? 0 : leftOut));
}

template <class T>
void CInverseSweep<T>::unfilterColumns(int level, int smoothRow, std::size_t first,
                                       std::size_t columns) {
    const int rows = levels[level].rows;
    T* smooth = line(level, smoothRow) + first;
    if (smoothRow == 0) return unupdateEndLines(smooth, line(level, 1) + first, columns);

    const T* smoothBefore = line(level, smoothRow - 2) + first;
    T* detailBefore = line(level, smoothRow - 1) + first;
    if (smoothRow == rows - 1) {
        unupdateEndLines(smooth, detailBefore, columns);
        unpredictLines(detailBefore, smoothBefore, smooth, columns);
        return;
    }
    T* detail = line(level, smoothRow + 1) + first;
    kernels.unfilterRows(smooth, detailBefore, smoothBefore, detail, columns);
    if (smoothRow == rows - 2) unpredictEndLines(detail, smooth, columns);
}

template class CInverseSweep<short>;
template class CInverseSweep<int>;

}  // namespace qmx
