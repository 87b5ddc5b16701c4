#pragma once

#include <algorithm>

#include "bitstream/Memory.h"
#include "image/CImageData.h"
#include "image/ImageShape.h"
#include "wavelet/CInverseSweep.h"
#include "wavelet/CLevelLines.h"

namespace qmx {

/// The inverse transform of an image, row by row: takes rows of coefficients as far ahead as the sweep
/// needs them, and gives the rows of the image. Plain way: all coefficients first, then the planes.
///
/// An image without levels is filtered once all the same (Quirk 4). A reduced picture is what the finest
/// levels would be given: its coefficients are those of the orders from `reduction` up.
/// Format: docs/format.md, 6.6 Inverse transform and 17 Reduced pictures.
template <class T>
class CRowRestorer {
public:
    /// For an image of this shape at 1 : 2^reduction. Requires: reduction is at most the levels of the image,
    /// or 0; memory outlives this object. Throws: std::bad_alloc.
    CRowRestorer(const ImageShape& imageShape, std::pmr::memory_resource* memory,
                 int reduction = 0);

    /// Restores row r. First calls fill(plane, row, samples) for the rows that are missing, each of them
    /// once and in their order: the samples are 0 and become the coefficients of the row.
    /// Requires: all rows, from 0 on. Returns: false when fill has returned false, which ends the work.
    /// Throws: what fill throws.
    template <class Fill>
    bool restore(int r, Fill fill);

    /// Where row r stands once it is restored, until the next one is.
    const CImageData<T>& rows() const { return ring; }
    int slotOf(int r) const { return r % ring.y; }

private:
    struct Plane {
        Plane(const LevelGeometry& finest, int levels, CImageData<T>& ring, int plane,
              std::pmr::memory_resource* memory)
            : lines(finest, levels, ring, plane, memory), sweep(lines) {}

        CLevelLines<T> lines;
        CInverseSweep<T> sweep;
    };

    /// Of the picture.
    ImageShape shape;
    int rowsAhead;
    CImageData<T> ring;
    /// None where no level is left to restore.
    MemoryObject<Plane> planes[CImageData<T>::kMaxPlanes];
    int filled = 0;
};

template <class T>
template <class Fill>
bool CRowRestorer<T>::restore(int r, Fill fill) {
    for (; filled < shape.height && filled <= r + rowsAhead; ++filled)
        for (int p = 0; p < shape.planes; ++p) {
            T* row = ring.row(p, slotOf(filled));
            std::fill_n(row, ring.stride, T{0});
            if (!fill(p, filled, row)) return false;
        }
    for (const auto& plane : planes)
        if (plane) plane->sweep.restoreRow(r);
    return true;
}

extern template class CRowRestorer<short>;
extern template class CRowRestorer<int>;

}  // namespace qmx
