#pragma once

#include "coding/decode/CReceivedSections.h"
#include "coding/decode/RowDecoding.h"
#include "wavelet/IRowSink.h"

namespace qmx {

/// Decodes and restores the picture of sections, the image or a reduced one, in one pass, and gives its rows
/// to sink, from the first to the last. Requires: sections.read has returned 0 or 4, and its reader is as it
/// was; called once.
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
