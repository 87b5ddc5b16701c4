#pragma once

#include "coding/encode/CSweptPlane.h"
#include "coding/encode/CThinPlane.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// Transforms and codes an image in one pass over its rows; a few rows of each level are in work at one
/// time. Format: docs/format.md, 6 Wavelet transform and 10 Sections.
template <class T>
class CRowsEncoder {
public:
    /// Requires: codedSections are those of an image of this shape, and nothing is coded in them; they
    /// outlive this object. Throws: std::bad_alloc.
    CRowsEncoder(CCodedSections<T>& codedSections, const RowEncoding& encoding);

    /// Codes the next row, which source gives. Requires: there is one.
    /// Throws: std::bad_alloc and what source throws; the sections are then of no use.
    void takeRow(IRowSource<T>& source);
    /// Returns: rows that were taken.
    int rowsTaken() const { return next; }
    /// Closes the sections. Requires: all rows were taken; called once. Throws: std::bad_alloc.
    void finish();
    /// Returns: whether the filter changed an image without levels.
    bool isChangedByFilter() const;

private:
    /// Calls work(plane) with what codes each colour plane.
    template <class Work>
    void forEachPlane(Work work) const;

    CCodedSections<T>& sections;
    CImageData<T> rows;
    // One of each, as the image has levels or not.
    MemoryObject<CSweptPlane<T>> swept[CImageData<T>::kMaxPlanes];
    MemoryObject<CThinPlane<T>> thin[CImageData<T>::kMaxPlanes];
    int next = 0;
};

extern template class CRowsEncoder<short>;
extern template class CRowsEncoder<int>;

}  // namespace qmx
