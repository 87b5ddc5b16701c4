#include "wavelet/LiftingKernels.h"

#include "wavelet/LiftingLines.h"

namespace qmx {
namespace {

template <class T>
void filterLine(T* line, std::size_t samples) {
    filterWholeLine(line, static_cast<int>(samples));
}

template <class T>
void joinLine(T* line, T* evens, const T* odds, std::size_t samples) {
    joinWholeLine(line, evens, odds, samples);
}

template <class T>
void filterRows(T* smooth, T* detail, const T* detailBefore, const T* smoothAfter,
                std::size_t columns) {
    predictLines(detail, smooth, smoothAfter, columns);
    updateLines(smooth, detailBefore, detail, columns);
}

template <class T>
void unfilterRows(T* smooth, T* detailBefore, const T* smoothBefore, const T* detail,
                  std::size_t columns) {
    unupdateLines(smooth, detailBefore, detail, columns);
    unpredictLines(detailBefore, smoothBefore, smooth, columns);
}

template <class T>
constexpr LiftingKernels<T> kTable{filterLine<T>, joinLine<T>, filterRows<T>, unfilterRows<T>};

}  // namespace

template <class T>
const LiftingKernels<T> LiftingKernels<T>::scalar = kTable<T>;
template const LiftingKernels<short> LiftingKernels<short>::scalar;
template const LiftingKernels<int> LiftingKernels<int>::scalar;

}  // namespace qmx
