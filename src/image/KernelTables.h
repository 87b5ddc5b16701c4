#pragma once

#include "image/CpuLevel.h"

namespace qmx {

// A family of kernels is a struct of function pointers with a static member for each level: `scalar`, `avx2`
// and `avx512`, of which the last two are defined on x86-64 alone.

/// Returns: the kernels of a level. Requires: the processor has it.
template <class Kernels>
const Kernels& kernelsAt([[maybe_unused]] CpuLevel level) {
#ifdef QMX_X86
    if (level == CpuLevel::avx512) return Kernels::avx512;
    if (level == CpuLevel::avx2) return Kernels::avx2;
#endif
    return Kernels::scalar;
}

template <class Kernels>
const Kernels& activeKernels() {
    return kernelsAt<Kernels>(activeCpuLevel());
}

}  // namespace qmx
