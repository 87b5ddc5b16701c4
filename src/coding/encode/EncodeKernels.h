#pragma once

#include <cstddef>

#include "coding/encode/OrderSections.h"
#include "coding/syntax/CoefficientGroup.h"
#include "image/KernelTables.h"

namespace qmx {

/// The coefficient encoder of folded values. Format: docs/format.md, 10 Sections.
template <class T>
struct EncodeKernels {
    /// Appends count coefficients of one order, in scan order, to its sections, and counts them.
    /// Requires: whole groups stand at folded, the last one filled up with 0.
    /// Throws: std::bad_alloc.
    void (*encode)(OrderSections& order, const T* folded, std::size_t count);
    /// Appends what encode has kept back in the queues. Throws: std::bad_alloc.
    void (*finish)(OrderSections& order);
};

extern const KernelTables<EncodeKernels> kEncodeScalar;
extern const KernelTables<EncodeKernels> kEncodeAvx2;
extern const KernelTables<EncodeKernels> kEncodeAvx512;

/// Returns: the kernels of a level. Requires: the processor has it.
template <class T>
const EncodeKernels<T>& encodeKernels(CpuLevel level) {
    return atLevel(level, kEncodeScalar, kEncodeAvx2, kEncodeAvx512).template of<T>();
}

template <class T>
const EncodeKernels<T>& activeEncodeKernels() {
    return encodeKernels<T>(activeCpuLevel());
}

}  // namespace qmx
