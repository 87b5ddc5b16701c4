#pragma once

#include "wavelet/CFilter.h"

namespace qmx {

/// The integer 5/3 filter. Lines of fewer than 4 samples stay as they are.
/// Format: docs/format.md, 6.2 One line.
template <class T>
class CFilter5_3 final : public CFilter<T> {
public:
    int transform(T* data, int length, unsigned long stride) override;
    void untransform(T* data, int length, unsigned long stride) override;
    int transformMul(T* data, int length, unsigned long stride, int count,
                     unsigned long step) override;
    void untransformMul(T* data, int length, unsigned long stride, int count,
                        unsigned long step) override;
};

extern template class CFilter5_3<short>;
extern template class CFilter5_3<int>;

}  // namespace qmx
