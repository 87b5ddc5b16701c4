#include "coding/decode/DecodeRows.h"

#include "coding/decode/CRowsDecoder.h"

namespace qmx {

template <class T>
bool decodeRows(CReceivedSections<T>& sections, IRowSink<T>& sink, const RowDecoding& decoding) {
    CRowsDecoder<T> decoder(sections, decoding);
    for (int r = 0; r < sections.shape().height; ++r) {
        if (!decoder.restoreRow()) return false;
        if (!sink.take(decoder.rows(), 0, r) || decoding.stop.isSet()) return false;
    }
    return true;
}

template bool decodeRows<short>(CReceivedSections<short>&, IRowSink<short>&, const RowDecoding&);
template bool decodeRows<int>(CReceivedSections<int>&, IRowSink<int>&, const RowDecoding&);

}  // namespace qmx
