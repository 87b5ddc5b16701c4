#include "coding/encode/EncodeRows.h"

#include "coding/encode/CPlaneEncoder.h"
#include "coding/encode/CRowLines.h"
#include "coding/encode/CThinPlane.h"
#include "wavelet/CForwardSweep.h"

namespace qmx {
namespace {

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

template <class T, class Plane>
RowsEncoded encodeWith(IRowSource<T>& source, CCodedSections<T>& sections,
                       const RowEncoding& encoding) {
    const ImageShape& shape = sections.shape();
    CImageData<T> rows(shape.width, CRowLines<T>::kRows, shape.planes, sections.memory());
    MemoryObject<Plane> planes[CImageData<T>::kMaxPlanes];
    for (int p = 0; p < shape.planes; ++p)
        planes[p] = makeObject<Plane>(sections.memory(), sections, rows, p, encoding);
    for (int r = 0; r < shape.height; ++r) {
        source.load(rows, r % rows.y, r);
        for (int p = 0; p < shape.planes; ++p)
            planes[p]->takeRow(r);
        if (encoding.stop.isSet()) return {false, false};
    }
    FoldedUnion<T> all;
    bool isChangedByFilter = false;
    for (int p = 0; p < shape.planes; ++p) {
        planes[p]->encoder.finish();
        all.add(planes[p]->encoder.getFound());
        isChangedByFilter = isChangedByFilter || planes[p]->isChangedByFilter();
    }
    sections.close(all);
    return {true, isChangedByFilter};
}

}  // namespace

template <class T>
RowsEncoded encodeRows(IRowSource<T>& source, CCodedSections<T>& sections,
                       const RowEncoding& encoding) {
    return sections.levels() >= 1 ? encodeWith<T, CSweptPlane<T>>(source, sections, encoding)
                                  : encodeWith<T, CThinPlane<T>>(source, sections, encoding);
}

template RowsEncoded encodeRows<short>(IRowSource<short>&, CCodedSections<short>&,
                                       const RowEncoding&);
template RowsEncoded encodeRows<int>(IRowSource<int>&, CCodedSections<int>&, const RowEncoding&);

}  // namespace qmx
