#include "coding/encode/EncodeRows.h"

#include "coding/encode/CRowsEncoder.h"

namespace qmx {

template <class T>
RowsEncoded encodeRows(IRowSource<T>& source, CCodedSections<T>& sections,
                       const RowEncoding& encoding) {
    CRowsEncoder<T> encoder(sections, encoding);
    for (int r = 0; r < sections.shape().height; ++r) {
        encoder.takeRow(source);
        if (encoding.stop.isSet()) return {false, false};
    }
    encoder.finish();
    return {true, encoder.isChangedByFilter()};
}

template RowsEncoded encodeRows<short>(IRowSource<short>&, CCodedSections<short>&,
                                       const RowEncoding&);
template RowsEncoded encodeRows<int>(IRowSource<int>&, CCodedSections<int>&, const RowEncoding&);

}  // namespace qmx
