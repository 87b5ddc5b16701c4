#include "wavelet/CFilter5_3.h"

#include <cstddef>
#include <type_traits>

#include "wavelet/LiftingLines.h"

namespace qmx {
namespace {

/// Calls run with the lines of a batch. Neighbouring lines get a constant step, so that the
/// compiler can use vectors for them.
template <class T, class Run>
void onBatch(T* data, unsigned long stride, int count, unsigned long step, Run run) {
    if (count <= 0) return;
    const auto lines = static_cast<std::size_t>(count);
    if (step == 1) {
        run(LiftingLines<T>{data, stride, lines, 1});
    } else {
        run(LiftingLines<T>{data, stride, lines, step});
    }
}

}  // namespace

// The single-line calls pass constants, so the kernels' loops over lines fold away.

template <class T>
int CFilter5_3<T>::transform(T* data, int length, unsigned long stride) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    filterLines(LiftingLines<T>{data, stride, 1, 1}, length);
    return 0;
}

template <class T>
void CFilter5_3<T>::untransform(T* data, int length, unsigned long stride) {
    unfilterLines(LiftingLines<T>{data, stride, 1, 1}, length);
}

template <class T>
int CFilter5_3<T>::transformMul(T* data, int length, unsigned long stride, int count,
                                unsigned long step) {
    onBatch(data, stride, count, step,
            [=](const LiftingLines<T>& lines) { filterLines(lines, length); });
    return 0;
}

template <class T>
void CFilter5_3<T>::untransformMul(T* data, int length, unsigned long stride, int count,
                                   unsigned long step) {
    onBatch(data, stride, count, step,
            [=](const LiftingLines<T>& lines) { unfilterLines(lines, length); });
}

template class CFilter5_3<short>;
template class CFilter5_3<int>;

}  // namespace qmx
