#pragma once

#include "coding/encode/CCodedSections.h"
#include "coding/encode/RowEncoding.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// What became of an image.
struct RowsEncoded {
    /// Whether all rows were coded; if not, the sections are of no use.
    bool isComplete;
    /// Whether the filter changed an image without levels.
    bool isChangedByFilter;
};

/// Transforms and codes the image that source gives, in one pass over its rows; a few rows of each level
/// are in work at one time. Requires: sections are those of an image of this shape, nothing is coded in
/// them. Throws: std::bad_alloc and what source throws; the sections are then of no use.
/// Format: docs/format.md, 6 Wavelet transform and 10 Sections.
template <class T>
RowsEncoded encodeRows(IRowSource<T>& source, CCodedSections<T>& sections,
                       const RowEncoding& encoding = {});

extern template RowsEncoded encodeRows<short>(IRowSource<short>&, CCodedSections<short>&,
                                              const RowEncoding&);
extern template RowsEncoded encodeRows<int>(IRowSource<int>&, CCodedSections<int>&,
                                            const RowEncoding&);

}  // namespace qmx
