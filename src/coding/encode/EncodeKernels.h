#pragma once

#include <cstddef>

#include "coding/encode/OrderSections.h"
#include "coding/syntax/CoefficientGroup.h"
#include "image/KernelTables.h"

namespace qmx {

/// The coefficient encoder of folded values. Format: docs/format.md, 10 Sections.
template <class T>
struct EncodeKernels {
    static const EncodeKernels scalar, avx2, avx512;

    /// Appends count coefficients of one order, in scan order, to its sections, and counts them.
    /// Requires: whole groups stand at folded, the last one filled up with 0.
    /// Throws: std::bad_alloc.
    void (*encode)(OrderSections& order, const T* folded, std::size_t count);
    /// Appends what encode has kept back in the queues. Throws: std::bad_alloc.
    void (*finish)(OrderSections& order);
};

extern template struct EncodeKernels<short>;
extern template struct EncodeKernels<int>;

}  // namespace qmx
