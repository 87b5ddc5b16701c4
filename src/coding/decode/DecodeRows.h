#pragma once

#include "bitstream/CStopRequest.h"
#include "coding/decode/CReceivedSections.h"
#include "wavelet/IRowSink.h"

namespace qmx {

/// How an image is decoded where that is a choice.
struct RowDecoding {
    /// Coefficients of rows in front of this one are 0 in all colour planes but the first, whose sections
    /// then begin with this row (Quirk 5).
    int firstRowOfLaterPlanes = 0;
    /// Ends the work.
    const CStopRequest& stop = kNeverStopped;

    int firstRowOf(int plane) const { return plane == 0 ? 0 : firstRowOfLaterPlanes; }
};

/// Decodes and restores an image in one pass, and gives its rows to sink, from the first to the last.
/// Requires: sections.read has returned 0 or 4, and its reader is as it was; called once.
/// Returns: whether all rows were given; not when it was stopped, also behind the last row, or when sink
/// wanted no more. Throws: std::bad_alloc and what sink throws.
/// Format: docs/format.md, 13.2 Coefficients and 6.6 Inverse transform.
template <class T>
bool decodeRows(CReceivedSections<T>& sections, IRowSink<T>& sink,
                const RowDecoding& decoding = {});

extern template bool decodeRows<short>(CReceivedSections<short>&, IRowSink<short>&,
                                       const RowDecoding&);
extern template bool decodeRows<int>(CReceivedSections<int>&, IRowSink<int>&, const RowDecoding&);

}  // namespace qmx
