#pragma once

#include "coding/decode/CPlaneDecoder.h"
#include "coding/decode/RowDecoding.h"
#include "wavelet/CRowRestorer.h"

namespace qmx {

/// Decodes and restores an image or a reduced picture, one row at a time; a few rows of each level are in work.
/// Format: docs/format.md, 13.2 Coefficients and 6.6 Inverse transform.
template <class T>
class CRowsDecoder {
public:
    /// Requires: sections.read has returned 0 or 4, and its reader is as it was; they outlive this object,
    /// the only one that decodes them. Throws: std::bad_alloc.
    CRowsDecoder(CReceivedSections<T>& sections, const RowDecoding& rowDecoding);

    /// Restores the next row. Returns: false when it was stopped, which ends the work.
    /// Requires: there is one. Throws: std::bad_alloc.
    bool restoreRow();
    /// The row that was restored last: row 0 of these.
    const CImageData<T>& rows() const { return restorer.rows(); }
    /// Returns: rows that were restored.
    int rowsRestored() const { return restored; }

private:
    RowDecoding decoding;
    CRowRestorer<T> restorer;
    MemoryObject<CPlaneDecoder<T>> decoders[CImageData<T>::kMaxPlanes];
    int restored = 0;
};

extern template class CRowsDecoder<short>;
extern template class CRowsDecoder<int>;

}  // namespace qmx
