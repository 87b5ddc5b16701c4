#pragma once

#include <cstddef>

#include "wavelet/LevelGeometry.h"
#include "wavelet/LiftingSteps.h"

namespace qmx {

/// Parallel lines, addressed by position: position i of all lines is one step, so that a batch of
/// neighbouring columns walks through memory row by row.
template <class T>
struct LiftingLines {
    T* data;
    std::size_t stride;
    std::size_t count;
    std::size_t step;

    T* at(int position) const { return data + static_cast<std::size_t>(position) * stride; }
    void predict(int i) const { predictLines(at(i), at(i - 1), at(i + 1), count, step); }
    void update(int i) const { updateLines(at(i), at(i - 1), at(i + 1), count, step); }
    void unpredict(int i) const { unpredictLines(at(i), at(i - 1), at(i + 1), count, step); }
    void unupdate(int i) const { unupdateLines(at(i), at(i - 1), at(i + 1), count, step); }
};

/// Filters from the even position i on; all before it is done. Requires: 2 <= i < length.
template <class T>
inline void filterLinesFrom(const LiftingLines<T>& lines, int i, int length) {
    for (; i < length - 2; i += 2) {
        lines.predict(i + 1);
        lines.update(i);
    }
    const bool evenLength = i == length - 2;
    if (evenLength) {
        predictEndLines(lines.at(i + 1), lines.at(i), lines.count, lines.step);
        lines.update(i);
    } else {
        updateEndLines(lines.at(i), lines.at(i - 1), lines.count, lines.step);
    }
}

/// Format: docs/format.md, 6.2 One line.
template <class T>
inline void filterLines(const LiftingLines<T>& lines, int length) {
    if (length < kShortestLine) return;
    lines.predict(1);
    updateEndLines(lines.at(0), lines.at(1), lines.count, lines.step);
    filterLinesFrom(lines, 2, length);
}

/// Undoes filterLines from the even position i on; position i - 1 still holds a detail, all before it
/// is done. Requires: 2 <= i < length.
template <class T>
inline void unfilterLinesFrom(const LiftingLines<T>& lines, int i, int length) {
    for (; i < length - 2; i += 2) {
        lines.unupdate(i);
        lines.unpredict(i - 1);
    }
    const bool evenLength = i == length - 2;
    if (evenLength) {
        lines.unupdate(i);
        lines.unpredict(i - 1);
        unpredictEndLines(lines.at(i + 1), lines.at(i), lines.count, lines.step);
    } else {
        unupdateEndLines(lines.at(i), lines.at(i - 1), lines.count, lines.step);
        lines.unpredict(i - 1);
    }
}

template <class T>
inline void unfilterLines(const LiftingLines<T>& lines, int length) {
    if (length < kShortestLine) return;
    unupdateEndLines(lines.at(0), lines.at(1), lines.count, lines.step);
    unfilterLinesFrom(lines, 2, length);
}

}  // namespace qmx
