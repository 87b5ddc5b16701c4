#include "coding/decode/CRowsDecoder.h"

#include <algorithm>

namespace qmx {

template <class T>
CRowsDecoder<T>::CRowsDecoder(CReceivedSections<T>& sections, const RowDecoding& rowDecoding)
    : decoding(rowDecoding),
      restorer(sections.imageShape(), sections.memory(), sections.reduction()) {
    for (int p = 0; p < sections.shape().planes; ++p)
        decoders[p] = makeObject<CPlaneDecoder<T>>(sections.memory(), sections, p);
}

template <class T>
bool CRowsDecoder<T>::restoreRow() {
    const auto fill = [this](int p, int row, T* samples) {
        if (row >= decoding.firstRowOf(p)) {
            decoders[p]->decodeRow(row, samples);
        } else {
            std::fill_n(samples, restorer.rows().x, T{0});
        }
        return !decoding.stop.isSet();
    };
    return restorer.restore(restored++, fill);
}

template class CRowsDecoder<short>;
template class CRowsDecoder<int>;

}  // namespace qmx
