#include "wavelet/CWavelet.h"

#include <type_traits>
#include <typeinfo>

#include "wavelet/CFilter5_3.h"

namespace qmx {
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
    return canSweep() && goesByRows(image->x, image->y);
}

template class CWavelet<short>;
template class CWavelet<int>;

}  // namespace qmx
