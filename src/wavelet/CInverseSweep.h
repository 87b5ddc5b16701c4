#pragma once

#include "bitstream/Memory.h"
#include "image/CImageData.h"
#include "wavelet/LevelGeometry.h"
#include "wavelet/LiftingKernels.h"

namespace qmx {

/// Undoes a CForwardSweep, in one pass from top to bottom: a step of a level asks the next level for
/// the row that it needs, so that deeper levels run ahead.
///
/// Plain way: every level takes its samples out of the rows, filters them and puts them back. Here rows come apart (see
/// CRowRestorer): a line of a level is the beginning of a row of the plane, its evens in front of its odds, and the
/// line that the next level restores belongs where the evens are. Columns are filtered as they stand; only
/// joinLine puts samples side by side. Photographs of 8 bits are decompressed in 0.89 of the time (2026-11-22).
/// Format: docs/format.md, 6.6 Inverse transform.
template <class T>
class CInverseSweep {
public:
    /// Level 0 is the level `finest` of the image; row r of it stands in row r modulo ring.y of a plane of ring.
    /// Requires: levelCount >= 1, the levels that the image has from there on, or 1; ring has the width of level 0
    /// and a power of two of rows; ring outlives the sweep. Throws: std::bad_alloc.
    CInverseSweep(const LevelGeometry& finest, int levelCount, CImageData<T>& ring, int plane,
                  std::pmr::memory_resource* memory);

    /// Restores row r of the plane to out. Requires: all rows, from 0 on.
    void restoreRow(int r, T* out);

private:
    struct Level {
        int rows;
        std::size_t columns;
        std::size_t filteredColumns;
        /// The smooth row that the next step begins with.
        int nextSmooth = 0;
    };

    T* line(int level, int r) const {
        return firstRow + static_cast<std::ptrdiff_t>((r << level) & ringMask) * stride;
    }
    std::size_t evens(int level) const { return (levels[level].columns + 1) / 2; }
    void unfilterRowsUpTo(int level, int r);
    void fillSmooth(int level, int smoothRow);
    void unfilterColumns(int level, int smoothRow);
    void unfilterColumns(int level, int smoothRow, std::size_t first, std::size_t columns);
    void joinLine(int level, int r, T* out) const;

    const LiftingKernels<T>& kernels;
    Level levels[kMaxLevels];
    int count;
    T* firstRow;
    std::ptrdiff_t stride;
    int ringMask;
    /// A line of level 1 or deeper, before it goes to the place of its coefficients.
    MemoryArray<T> joined;
};

extern template class CInverseSweep<short>;
extern template class CInverseSweep<int>;

}  // namespace qmx
