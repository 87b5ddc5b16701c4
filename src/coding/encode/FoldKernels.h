#pragma once

#include <cstddef>
#include <cstdint>

#include "image/KernelTables.h"

namespace qmx {

/// What folding found out about coefficients.
template <class T>
struct FoldedUnion {
    T bits = 0;
    /// Coefficients that came out as magnitude 0 without being 0.
    std::uint64_t lost = 0;

    void add(const FoldedUnion& other) {
        bits = static_cast<T>(bits | other.bits);
        lost += other.lost;
    }
};

/// What happens to rows before their coefficients are coded.
template <class T>
struct FoldKernels {
    static const FoldKernels scalar, avx2, avx512;

    /// Folds count coefficients. folded may be row, and does not overlap it otherwise.
    /// Format: docs/format.md, 8 Folded values and top plane.
    void (*fold)(const T* row, std::size_t count, T* folded, FoldedUnion<T>& all);
    /// evens[i] = row[2 i], odds[i] = row[2 i + 1], for i < count. Requires: odds does not overlap the
    /// others; evens may be row.
    void (*split)(const T* row, std::size_t count, T* evens, T* odds);
};

extern template struct FoldKernels<short>;
extern template struct FoldKernels<int>;

}  // namespace qmx
