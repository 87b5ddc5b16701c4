#include "coding/encode/CRowsEncoder.h"

namespace qmx {

template <class T>
template <class Work>
void CRowsEncoder<T>::forEachPlane(Work work) const {
    for (int p = 0; p < rows.planes; ++p)
        if (swept[p] != nullptr) {
            work(*swept[p]);
        } else {
            work(*thin[p]);
        }
}

template <class T>
CRowsEncoder<T>::CRowsEncoder(CCodedSections<T>& codedSections, const RowEncoding& encoding)
    : sections(codedSections),
      rows(sections.shape().width, CRowLines<T>::kRows, sections.shape().planes,
           sections.memory()) {
    std::pmr::memory_resource* memory = sections.memory();
    for (int p = 0; p < rows.planes; ++p)
        if (sections.levels() >= 1) {
            swept[p] = makeObject<CSweptPlane<T>>(memory, sections, rows, p, encoding);
        } else {
            thin[p] = makeObject<CThinPlane<T>>(memory, sections, rows, p, encoding);
        }
}

template <class T>
void CRowsEncoder<T>::takeRow(IRowSource<T>& source) {
    source.load(rows, next % rows.y, next);
    forEachPlane([this](auto& plane) { plane.takeRow(next); });
    ++next;
}

template <class T>
void CRowsEncoder<T>::finish() {
    FoldedUnion<T> all;
    forEachPlane([&all](auto& plane) {
        plane.encoder.finish();
        all.add(plane.encoder.getFound());
    });
    sections.close(all);
}

template <class T>
bool CRowsEncoder<T>::isChangedByFilter() const {
    bool isChanged = false;
    forEachPlane([&](const auto& plane) { isChanged = isChanged || plane.isChangedByFilter(); });
    return isChanged;
}

template class CRowsEncoder<short>;
template class CRowsEncoder<int>;

}  // namespace qmx
