#pragma once

#include <algorithm>

#include "bitstream/Memory.h"
#include "image/CImageData.h"
#include "image/ImageShape.h"
#include "wavelet/CInverseSweep.h"

namespace qmx {

/// The inverse transform of an image, row by row: takes rows of coefficients as far ahead as the sweep
/// needs them, and gives the rows of the image. Plain way: all coefficients first, then the planes.
///
/// An image without levels is filtered once all the same (Quirk 4). A reduced picture is what the finest
/// levels would be given: its coefficients are those of the orders from `reduction` up.
///
/// Coefficients of a row come apart, as the sweep works on them: those that deeper levels restore, of as many
/// columns as the next level has, and behind them the odd columns of this one; the first part in the same way, as far as
/// the row belongs to the next level and that is restored. Row 4 of a picture of 8 columns and 2 levels:
///
///     column   0   4   2   6   1   3   5   7        rows 1 and 3: 0 2 4 6 1 3 5 7, row 2: 0 4 2 6 1 3 5 7
///     order    2   2   1   1   0   0   0   0
/// Format: docs/format.md, 6.6 Inverse transform and 17 Reduced pictures.
template <class T>
class CRowRestorer {
public:
    /// For an image of this shape at 1 : 2^reduction. Requires: reduction is at most the levels of the image,
    /// or 0; memory outlives this object. Throws: std::bad_alloc.
    CRowRestorer(const ImageShape& imageShape, std::pmr::memory_resource* memory,
                 int reduction = 0);

    /// Restores row r. First calls fill(plane, row, samples) for the rows that are missing, each of them
    /// once and in their order: the samples become the coefficients of the row, apart.
    /// Requires: all rows, from 0 on. Returns: false when fill has returned false, which ends the work.
    /// Throws: what fill throws.
    template <class Fill>
    bool restore(int r, Fill fill);

    /// The row that was restored last: row 0 of these.
    const CImageData<T>& rows() const { return restored; }

private:
    /// Of the picture.
    ImageShape shape;
    int rowsAhead;
    CImageData<T> ring;
    CImageData<T> restored;
    /// None where no level is left to restore.
    MemoryObject<CInverseSweep<T>> sweeps[CImageData<T>::kMaxPlanes];
    int filled = 0;
};

template <class T>
template <class Fill>
bool CRowRestorer<T>::restore(int r, Fill fill) {
    for (; filled < shape.height && filled <= r + rowsAhead; ++filled)
        for (int p = 0; p < shape.planes; ++p) {
            T* row = ring.row(p, filled % ring.y);
            if (!fill(p, filled, row)) return false;
        }
    for (int p = 0; p < shape.planes; ++p)
        if (sweeps[p])
            sweeps[p]->restoreRow(r, restored.row(p, 0));
        else
            std::copy_n(ring.row(p, r % ring.y), shape.width, restored.row(p, 0));
    return true;
}

extern template class CRowRestorer<short>;
extern template class CRowRestorer<int>;

}  // namespace qmx
