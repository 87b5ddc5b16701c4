#include "wavelet/CInverseSweep.h"

#include "wavelet/LiftingSteps.h"

namespace qmx {

template <class T>
void CInverseSweep<T>::restoreRow(int level, int r) {
    int& next = nextSmooth[level];
    // A step restores the two rows before its own ones, the last step these too.
    for (; next < lines.rows(level) && next - 2 <= r; next += 2)
        step(level, next);
}

template <class T>
void CInverseSweep<T>::step(int level, int smoothRow) {
    const int detailRow = smoothRow + 1;
    const int rows = lines.rows(level);
    fillSmooth(level, smoothRow);
    if (detailRow < rows) gather(level, detailRow);
    unfilterColumns(level, smoothRow);
    if (smoothRow > 0) {
        unfilterLine(level, smoothRow - 2);
        unfilterLine(level, smoothRow - 1);
    }
    if (smoothRow + 2 < rows) return;
    unfilterLine(level, smoothRow);
    if (detailRow < rows) unfilterLine(level, detailRow);
}

/// Gets a smooth row, with the samples that the deeper levels restore.
template <class T>
void CInverseSweep<T>::fillSmooth(int level, int smoothRow) {
    const int next = level + 1;
    if (next == lines.count()) return gather(level, smoothRow);
    const int r = smoothRow / 2;
    T* smooth = lines.line(level, smoothRow);
    restoreRow(next, r);
    kernels.putEvens(smooth, lines.line(next, r), lines.columns(next));
}

/// Copies the samples of row r of a level out of the plane, and on the way those of all finer levels
/// in this row.
template <class T>
void CInverseSweep<T>::gather(int level, int r) {
    for (int l = 1; l <= level; ++l) {
        const int row = r << (level - l);
        kernels.takeEvens(lines.line(l, row), lines.line(l - 1, 2 * row), lines.columns(l));
    }
}

/// Undoes the updates of a smooth row and the predictions of the details before it; at the end of the
/// columns those of the details behind it.
template <class T>
void CInverseSweep<T>::unfilterColumns(int level, int smoothRow) {
    const std::size_t columns = lines.filteredColumns(level);
    const int rows = lines.rows(level);
    if (rows < kShortestLine) return;
    T* smooth = lines.line(level, smoothRow);
    if (smoothRow == 0) return unupdateEndLines(smooth, lines.line(level, 1), columns);

    const T* smoothBefore = lines.line(level, smoothRow - 2);
    T* detailBefore = lines.line(level, smoothRow - 1);
    if (smoothRow == rows - 1) {
        unupdateEndLines(smooth, detailBefore, columns);
        unpredictLines(detailBefore, smoothBefore, smooth, columns);
        return;
    }
    T* detail = lines.line(level, smoothRow + 1);
    kernels.unfilterRows(smooth, detailBefore, smoothBefore, detail, columns);
    if (smoothRow == rows - 2) unpredictEndLines(detail, smooth, columns);
}

template <class T>
void CInverseSweep<T>::unfilterLine(int level, int r) {
    if (lines.columns(level) >= kShortestLine)
        kernels.unfilterLine(lines.line(level, r), lines.columns(level));
}

template class CInverseSweep<short>;
template class CInverseSweep<int>;

}  // namespace qmx
