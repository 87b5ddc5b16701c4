#pragma once

#include <cstddef>

#include "coding/encode/OrderSections.h"
#include "image/CpuLevel.h"

namespace qmx {

/// Coefficients that are coded together: one bit of a word for each.
inline constexpr std::size_t kGroupSize = 64;

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

template <class T>
const EncodeKernels<T>& encodeKernels(CpuLevel level);

extern const EncodeKernels<short> kEncodeShortAvx2;
extern const EncodeKernels<int> kEncodeIntAvx2;
extern const EncodeKernels<short> kEncodeShortAvx512;
extern const EncodeKernels<int> kEncodeIntAvx512;

}  // namespace qmx
