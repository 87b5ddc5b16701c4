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

/// Restores the odds from odds[i] on and puts the line together from there. Requires: all evens are restored;
/// there is an odd sample.
template <class T>
inline void joinLineFrom(T* line, const T* evens, const T* odds, std::size_t i,
                         std::size_t samples) {
    for (; 2 * i + 2 < samples; ++i) {
        line[2 * i] = evens[i];
        line[2 * i + 1] =
            static_cast<T>(wrappingSum(odds[i], half(wrappingSum(evens[i], evens[i + 1]))));
    }
    line[2 * i] = evens[i];
    if (2 * i + 2 == samples) line[2 * i + 1] = static_cast<T>(wrappingSum(odds[i], evens[i]));
}

/// Undoes filterWholeLine for a line whose evens and odds stand apart. Changes the evens.
template <class T>
inline void joinWholeLine(T* line, T* evens, const T* odds, std::size_t samples) {
    if (samples < kShortestLine) {
        for (std::size_t i = 0; i < samples; ++i)
            line[i] = i % 2 == 0 ? evens[i / 2] : odds[i / 2];
        return;
    }
    const std::size_t oddCount = samples / 2;
    unupdateEndLines(evens, odds, 1);
    unupdateLines(evens + 1, odds, odds + 1, oddCount - 1);
    if (samples % 2 != 0) unupdateEndLines(evens + oddCount, odds + oddCount - 1, 1);
    joinLineFrom(line, evens, odds, 0, samples);
}

}  // namespace qmx
