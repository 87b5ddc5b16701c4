#pragma once

#include "coding/encode/CCodedSections.h"
#include "coding/encode/CPlaneEncoder.h"
#include "coding/encode/CRowLines.h"
#include "coding/encode/RowEncoding.h"
#include "wavelet/CForwardSweep.h"

namespace qmx {

/// What transforms and codes one colour plane of an image with levels.
template <class T>
class CSweptPlane {
public:
    CSweptPlane(CCodedSections<T>& sections, CImageData<T>& rows, int plane,
                const RowEncoding& encoding)
        : encoder(sections, plane, encoding.firstRowOf(plane)),
          lines(sections.shape(), sections.levels(), rows, plane, encoder, sections.memory()),
          sweep(lines) {}

    void takeRow(int r) { sweep.takeRow(r); }
    bool isChangedByFilter() const { return false; }

    CPlaneEncoder<T> encoder;

private:
    CRowLines<T> lines;
    CForwardSweep<T, CRowLines<T>> sweep;
};

}  // namespace qmx
