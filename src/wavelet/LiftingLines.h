#pragma once

#include <cstddef>

#include "wavelet/LevelGeometry.h"
#include "wavelet/LiftingSteps.h"

namespace qmx {

// One line, in place: the plain way, and what vectors leave over.
// Format: docs/format.md, 6.2 One line.

/// Filters from the even position i on; all before it is done. Requires: 2 <= i < length.
template <class T>
inline void filterLineFrom(T* line, int i, int length) {
    for (; i < length - 2; i += 2) {
        predictLines(line + i + 1, line + i, line + i + 2, 1);
        updateLines(line + i, line + i - 1, line + i + 1, 1);
    }
    const bool hasEvenLength = i == length - 2;
    if (hasEvenLength) {
        predictEndLines(line + i + 1, line + i, 1);
        updateLines(line + i, line + i - 1, line + i + 1, 1);
    } else {
        updateEndLines(line + i, line + i - 1, 1);
    }
}

/// Filters a line; shorter ones than kShortestLine stay as they are.
template <class T>
inline void filterWholeLine(T* line, int length) {
    if (length < kShortestLine) return;
    predictLines(line + 1, line, line + 2, 1);
    updateEndLines(line, line + 1, 1);
    filterLineFrom(line, 2, length);
}

/// Undoes the filter from the even position i on; position i - 1 still holds a detail, all before it is
/// done. Requires: 2 <= i < length.
template <class T>
inline void unfilterLineFrom(T* line, int i, int length) {
    for (; i < length - 2; i += 2) {
        unupdateLines(line + i, line + i - 1, line + i + 1, 1);
        unpredictLines(line + i - 1, line + i - 2, line + i, 1);
    }
    const bool hasEvenLength = i == length - 2;
    if (hasEvenLength) {
        unupdateLines(line + i, line + i - 1, line + i + 1, 1);
        unpredictLines(line + i - 1, line + i - 2, line + i, 1);
        unpredictEndLines(line + i + 1, line + i, 1);
    } else {
        unupdateEndLines(line + i, line + i - 1, 1);
        unpredictLines(line + i - 1, line + i - 2, line + i, 1);
    }
}

/// Undoes filterWholeLine.
template <class T>
inline void unfilterWholeLine(T* line, int length) {
    if (length < kShortestLine) return;
    unupdateEndLines(line, line + 1, 1);
    unfilterLineFrom(line, 2, length);
}

}  // namespace qmx
