#pragma once

#include <cstddef>

#include "wavelet/LiftingRounding.h"

namespace qmx {

// The plain lifting steps over count samples side by side, of a line or of rows. Sums are formed in 32 bits and
// narrowed to T when they are stored, both with wrap-around. Requires: the output does not overlap the inputs.
// Format: docs/format.md, 6.2 One line.

/// detail -= half(left + right)
template <class T>
inline void predictLines(T* __restrict detail, const T* __restrict left, const T* __restrict right,
                         std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        detail[i] =
            static_cast<T>(wrappingDifference(detail[i], half(wrappingSum(left[i], right[i]))));
}

/// detail += half(left + right)
template <class T>
inline void unpredictLines(T* __restrict detail, const T* __restrict left,
                           const T* __restrict right, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        detail[i] = static_cast<T>(wrappingSum(detail[i], half(wrappingSum(left[i], right[i]))));
}

/// smooth += quarter(left + right)
template <class T>
inline void updateLines(T* __restrict smooth, const T* __restrict left, const T* __restrict right,
                        std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        smooth[i] = static_cast<T>(wrappingSum(smooth[i], quarter(wrappingSum(left[i], right[i]))));
}

/// smooth -= quarter(left + right)
template <class T>
inline void unupdateLines(T* __restrict smooth, const T* __restrict left, const T* __restrict right,
                          std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        smooth[i] =
            static_cast<T>(wrappingDifference(smooth[i], quarter(wrappingSum(left[i], right[i]))));
}

// At the ends of a line the missing neighbour mirrors the present one. half(2 x) is x and
// quarter(2 x) is half(x), so the sum is not formed: with 32-bit samples it could wrap.

/// detail -= neighbour
template <class T>
inline void predictEndLines(T* __restrict detail, const T* __restrict neighbour,
                            std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        detail[i] = static_cast<T>(wrappingDifference(detail[i], neighbour[i]));
}

/// detail += neighbour
template <class T>
inline void unpredictEndLines(T* __restrict detail, const T* __restrict neighbour,
                              std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        detail[i] = static_cast<T>(wrappingSum(detail[i], neighbour[i]));
}

/// smooth += half(neighbour)
template <class T>
inline void updateEndLines(T* __restrict smooth, const T* __restrict neighbour, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        smooth[i] = static_cast<T>(wrappingSum(smooth[i], half(neighbour[i])));
}

/// smooth -= half(neighbour)
template <class T>
inline void unupdateEndLines(T* __restrict smooth, const T* __restrict neighbour,
                             std::size_t count) {
    for (std::size_t i = 0; i < count; ++i)
        smooth[i] = static_cast<T>(wrappingDifference(smooth[i], half(neighbour[i])));
}

}  // namespace qmx
