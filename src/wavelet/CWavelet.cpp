#include "wavelet/CWavelet.h"

#include <cstdint>
#include <type_traits>
#include <typeinfo>

#include "wavelet/CFilter5_3.h"

namespace qmx {
namespace {

constexpr std::int64_t kFewestSamplesForRows = 1 << 16;
/// Twice the rows that are in work at one time.
constexpr int kFewestRowsForRows = 256;

}  // namespace

template <class T>
CWavelet<T>::CWavelet(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth)
    : filter(lineFilter),
      image(imageData),
      owns(ownsBoth),
      levels(levelCount(imageData->x, imageData->y)) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
}

template <class T>
CWavelet<T>::~CWavelet() {
    if (!owns) return;
    delete image;
    delete filter;
}

template <class T>
bool CWavelet<T>::canSweep() const {
    const CFilter<T>& lineFilter = *filter;
    return levels > 0 && typeid(lineFilter) == typeid(CFilter5_3<T>);
}

template <class T>
bool CWavelet<T>::gainsByRows() const {
    return canSweep() && image->y >= kFewestRowsForRows &&
           std::int64_t{image->x} * image->y >= kFewestSamplesForRows;
}

template class CWavelet<short>;
template class CWavelet<int>;

}  // namespace qmx
