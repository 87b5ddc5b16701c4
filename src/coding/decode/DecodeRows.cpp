#include "coding/decode/DecodeRows.h"

#include "coding/decode/CPlaneDecoder.h"
#include "wavelet/CRowRestorer.h"

namespace qmx {

template <class T>
bool decodeRows(CReceivedSections<T>& sections, IRowSink<T>& sink, const RowDecoding& decoding) {
    const ImageShape& shape = sections.shape();
    CRowRestorer<T> restorer(shape, sections.memory());
    MemoryObject<CPlaneDecoder<T>> decoders[CImageData<T>::kMaxPlanes];
    for (int p = 0; p < shape.planes; ++p)
        decoders[p] = makeObject<CPlaneDecoder<T>>(sections.memory(), sections, p);
    const auto fill = [&](int p, int row, T* samples) {
        if (row >= decoding.firstRowOf(p)) decoders[p]->decodeRow(row, samples);
        return !decoding.stop.isSet();
    };
    for (int r = 0; r < shape.height; ++r) {
        if (!restorer.restore(r, fill)) return false;
        if (!sink.take(restorer.rows(), restorer.slotOf(r), r) || decoding.stop.isSet())
            return false;
    }
    return true;
}

template bool decodeRows<short>(CReceivedSections<short>&, IRowSink<short>&, const RowDecoding&);
template bool decodeRows<int>(CReceivedSections<int>&, IRowSink<int>&, const RowDecoding&);

}  // namespace qmx
