#include "wavelet/CFilter5_3.h"

#include <cstddef>
#include <type_traits>

#include "wavelet/LiftingKernels.h"

namespace qmx {
namespace {

/// Lines shorter than this are not filtered.
constexpr int kShortestLine = 4;

/// The lines of one call, addressed by position: position i of all lines is one kernel call, so
/// that a batch of neighbouring columns walks through memory row by row.
template <class T>
struct Lines {
    T* data;
    std::size_t stride;
    std::size_t count;
    std::size_t step;

    T* at(int position) const { return data + static_cast<std::size_t>(position) * stride; }
    void predict(int i) const { predictLines(at(i), at(i - 1), at(i + 1), count, step); }
    void update(int i) const { updateLines(at(i), at(i - 1), at(i + 1), count, step); }
    void unpredict(int i) const { unpredictLines(at(i), at(i - 1), at(i + 1), count, step); }
    void unupdate(int i) const { unupdateLines(at(i), at(i - 1), at(i + 1), count, step); }
};

template <class T>
inline void forward(const Lines<T>& lines, int length) {
    if (length < kShortestLine) return;
    lines.predict(1);
    updateEndLines(lines.at(0), lines.at(1), lines.count, lines.step);
    int i = 2;
    for (; i < length - 2; i += 2) {
        lines.predict(i + 1);
        lines.update(i);
    }
    const bool evenLength = i == length - 2;
    if (evenLength) {
        predictEndLines(lines.at(i + 1), lines.at(i), lines.count, lines.step);
        lines.update(i);
    } else {
        updateEndLines(lines.at(i), lines.at(i - 1), lines.count, lines.step);
    }
}

template <class T>
inline void inverse(const Lines<T>& lines, int length) {
    if (length < kShortestLine) return;
    unupdateEndLines(lines.at(0), lines.at(1), lines.count, lines.step);
    int i = 2;
    for (; i < length - 2; i += 2) {
        lines.unupdate(i);
        lines.unpredict(i - 1);
    }
    const bool evenLength = i == length - 2;
    if (evenLength) {
        lines.unupdate(i);
        lines.unpredict(i - 1);
        unpredictEndLines(lines.at(i + 1), lines.at(i), lines.count, lines.step);
    } else {
        unupdateEndLines(lines.at(i), lines.at(i - 1), lines.count, lines.step);
        lines.unpredict(i - 1);
    }
}

/// Calls run with the lines of a batch. Neighbouring lines get a constant step, so that the
/// compiler can use vectors for them.
template <class T, class Run>
void onBatch(T* data, unsigned long stride, int count, unsigned long step, Run run) {
    if (count <= 0) return;
    const auto lines = static_cast<std::size_t>(count);
    if (step == 1) {
        run(Lines<T>{data, stride, lines, 1});
    } else {
        run(Lines<T>{data, stride, lines, step});
    }
}

}  // namespace

// The single-line calls pass constants, so the kernels' loops over lines fold away.

template <class T>
int CFilter5_3<T>::transform(T* data, int length, unsigned long stride) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    forward(Lines<T>{data, stride, 1, 1}, length);
    return 0;
}

template <class T>
void CFilter5_3<T>::untransform(T* data, int length, unsigned long stride) {
    inverse(Lines<T>{data, stride, 1, 1}, length);
}

template <class T>
int CFilter5_3<T>::transformMul(T* data, int length, unsigned long stride, int count,
                                unsigned long step) {
    onBatch(data, stride, count, step, [=](const Lines<T>& lines) { forward(lines, length); });
    return 0;
}

template <class T>
void CFilter5_3<T>::untransformMul(T* data, int length, unsigned long stride, int count,
                                   unsigned long step) {
    onBatch(data, stride, count, step, [=](const Lines<T>& lines) { inverse(lines, length); });
}

template class CFilter5_3<short>;
template class CFilter5_3<int>;

}  // namespace qmx
