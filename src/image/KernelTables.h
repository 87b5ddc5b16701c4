#pragma once

#include <type_traits>

#include "image/CpuLevel.h"

namespace qmx {

/// A family's kernels of one level, where they are a template over the type of coefficients.
template <template <class> class Kernels>
struct KernelTables {
    Kernels<short> ofShorts;
    Kernels<int> ofInts;

    template <class T>
    const Kernels<T>& of() const {
        if constexpr (std::is_same_v<T, short>) {
            return ofShorts;
        } else {
            return ofInts;
        }
    }
};

/// Returns: the one that belongs to level.
template <class Tables>
const Tables& atLevel(CpuLevel level, const Tables& scalar, const Tables& avx2,
                      const Tables& avx512) {
    if (level == CpuLevel::scalar) return scalar;
    return level == CpuLevel::avx2 ? avx2 : avx512;
}

}  // namespace qmx
