#pragma once

#include "wavelet/LevelGeometry.h"
#include "wavelet/LiftingKernels.h"
#include "wavelet/LiftingSteps.h"

namespace qmx {

/// Transforms a plane in one pass from top to bottom, with the 5/3 filter, at all levels at once: a
/// row enters the next level as soon as its level has filtered it in both directions. So the plane is
/// read once, and what is in work stays near.
///
/// The result is that of one level after the other: each level filters its rows, then its columns, and
/// a step down the columns needs no more than the rows beside it.
/// Format: docs/format.md, 6.4 Forward transform.
///
/// Lines holds the rows that are in work and takes those that are done:
///  - count(), rows(level), columns(level): the levels and their sizes;
///  - filteredColumns(level): how many columns are filtered vertically, from the left;
///  - line(level, r): row r of a level, from when it is taken until row r + 1 of the level is done;
///  - passOn(level, r): the smooth row r is done, and its even columns are a row of the next level;
///  - done(level, r): a detail row is done, or a smooth row of the last level.
/// Rows of a level are done in their order; detail rows are still read behind their end.
template <class T, class Lines>
class CForwardSweep {
public:
    /// Requires: levelLines outlives the sweep.
    explicit CForwardSweep(Lines& levelLines)
        : lines(levelLines), kernels(activeKernels<LiftingKernels<T>>()) {}

    /// Takes row r of the plane. Everything is done after the last one. Requires: all rows, from 0 on.
    void takeRow(int r) { takeRow(0, r); }

private:
    /// Row r of the level is there, not filtered yet.
    void takeRow(int level, int r) {
        if (lines.columns(level) >= kShortestLine)
            kernels.filterLine(lines.line(level, r), lines.columns(level));
        if (lines.rows(level) < kShortestLine) return lines.done(level, r);
        const bool isEven = r % 2 == 0;
        if (isEven && r > 0) filterColumns(level, r - 2);
        if (r == lines.rows(level) - 1) endColumns(level, r);
    }

    /// The rows up to the smooth one behind the next are there.
    void filterColumns(int level, int smoothRow) {
        const std::size_t columns = lines.filteredColumns(level);
        T* smooth = lines.line(level, smoothRow);
        T* detail = lines.line(level, smoothRow + 1);
        const T* smoothAfter = lines.line(level, smoothRow + 2);
        if (smoothRow == 0) {
            predictLines(detail, smooth, smoothAfter, columns);
            updateEndLines(smooth, detail, columns);
        } else {
            kernels.filterRows(smooth, detail, lines.line(level, smoothRow - 1), smoothAfter,
                               columns);
        }
        endSmooth(level, smoothRow);
        lines.done(level, smoothRow + 1);
    }

    void endColumns(int level, int lastRow) {
        const std::size_t columns = lines.filteredColumns(level);
        T* last = lines.line(level, lastRow);
        T* before = lines.line(level, lastRow - 1);
        if (lastRow % 2 == 0) {
            updateEndLines(last, before, columns);
            endSmooth(level, lastRow);
        } else {
            predictEndLines(last, before, columns);
            updateLines(before, lines.line(level, lastRow - 2), last, columns);
            endSmooth(level, lastRow - 1);
            lines.done(level, lastRow);
        }
    }

    /// The smooth row has been filtered in both directions.
    void endSmooth(int level, int smoothRow) {
        if (level + 1 == lines.count()) return lines.done(level, smoothRow);
        lines.passOn(level, smoothRow);
        takeRow(level + 1, smoothRow / 2);
    }

    Lines& lines;
    const LiftingKernels<T>& kernels;
};

}  // namespace qmx
