#include "wavelet/CForwardSweep.h"

#include "wavelet/LiftingSteps.h"

namespace qmx {

/// Row r of the level is there, not filtered yet.
template <class T>
void CForwardSweep<T>::takeRow(int level, int r) {
    kernels.filterLine(lines.line(level, r), lines.columns(level));
    const bool isEven = r % 2 == 0;
    if (isEven && r > 0) filterColumns(level, r - 2);
    if (r == lines.rows(level) - 1) endColumns(level, r);
}

/// The rows up to the smooth one behind the next are there.
template <class T>
void CForwardSweep<T>::filterColumns(int level, int smoothRow) {
    const std::size_t columns = lines.filteredColumns(level);
    T* smooth = lines.line(level, smoothRow);
    T* detail = lines.line(level, smoothRow + 1);
    const T* smoothAfter = lines.line(level, smoothRow + 2);
    if (smoothRow == 0) {
        predictLines(detail, smooth, smoothAfter, columns, 1);
        updateEndLines(smooth, detail, columns, 1);
    } else {
        kernels.filterRows(smooth, detail, lines.line(level, smoothRow - 1), smoothAfter, columns);
    }
    passOn(level, smoothRow);
    settle(level, smoothRow + 1);
}

template <class T>
void CForwardSweep<T>::endColumns(int level, int lastRow) {
    const std::size_t columns = lines.filteredColumns(level);
    T* last = lines.line(level, lastRow);
    T* before = lines.line(level, lastRow - 1);
    if (lastRow % 2 == 0) {
        updateEndLines(last, before, columns, 1);
        passOn(level, lastRow);
    } else {
        predictEndLines(last, before, columns, 1);
        updateLines(before, lines.line(level, lastRow - 2), last, columns, 1);
        passOn(level, lastRow - 1);
        settle(level, lastRow);
    }
}

/// The smooth row has been filtered in both directions.
template <class T>
void CForwardSweep<T>::passOn(int level, int smoothRow) {
    const int next = level + 1;
    if (next == lines.count()) return settle(level, smoothRow);
    kernels.takeEvens(lines.line(next, smoothRow / 2), lines.line(level, smoothRow),
                      lines.columns(next));
    takeRow(next, smoothRow / 2);
}

/// Row r of the level will not change any more: puts it back into the finer levels, up to the plane.
template <class T>
void CForwardSweep<T>::settle(int level, int r) {
    for (; level > 0; --level, r *= 2)
        kernels.putEvens(lines.line(level - 1, 2 * r), lines.line(level, r), lines.columns(level));
}

template class CForwardSweep<short>;
template class CForwardSweep<int>;

}  // namespace qmx
