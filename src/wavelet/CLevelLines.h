#pragma once

#include "wavelet/LevelGeometry.h"
#include "wavelet/LinesOfLevel.h"

namespace qmx {

/// The lines that a sweep over all levels of a plane works on. Level 0 is a ring of rows of the plane. The lines
/// of a deeper level l, the samples at multiples of 2^l, stand side by side; there is room for those
/// that are in work at one time.
///
/// A line waits the longer for deeper levels, or runs the farther ahead of finer ones, the more levels
/// it belongs to. So lines are grouped by that: row r belongs to the group of its trailing zero bits,
/// as far as there are deeper levels; each group has a few slots, which its rows take in turn.
template <class T>
class CLevelLines {
public:
    /// The plane is a ring: row r of it stands in row r modulo ring.y. Level 0 is the level `finest` of the
    /// image. Requires: levelCount >= 1, the levels that the image has from there on, or 1; ring has the width
    /// of level 0 and a power of two of rows; ring and memory outlive the lines. Throws: std::bad_alloc.
    CLevelLines(const LevelGeometry& finest, int levelCount, CImageData<T>& ring, int plane,
                std::pmr::memory_resource* memory);

    int count() const { return levelsUsed; }
    int rows(int level) const { return levels[level].rows; }
    std::size_t columns(int level) const { return levels[level].columns; }
    /// Returns: the columns that are filtered vertically, from the left.
    std::size_t filteredColumns(int level) const { return levels[level].filteredColumns; }

    /// Returns: row r of a level. Requires: 0 <= r < rows(level).
    T* line(int level, int r) const {
        return levels[level].line(level == 0 ? r & ringMask : slotOf(level, r));
    }

private:
    // The inverse sweep needs the most slots, because its deeper levels run ahead. A step of a level takes
    // in a smooth row and the detail row behind it, and begins when the finer level needs the row two
    // before. Row q 2^t of level l, q odd, belongs to group t. It is gathered for level l + t, and later
    // given away to level l - 1. Time is the row of the plane that is being restored; its unit here is
    // 2^(l + t) rows, the distance of such rows in the plane:
    //
    //     time              q - 5   q - 3   q - 1   q + 1
    //     row q 2^t           |=================)             gathered at q - 5, given away before q
    //     row (q + 2) 2^t             |=================)
    //     row (q + 4) 2^t                     |===============
    //     row (q + 6) 2^t                             |=======  in the slot of row q 2^t
    //
    // In the last group a step takes in two rows, q even and q + 1, both at q - 4. When q + 4 and q + 5
    // come, at q, row q is gone, and q + 1 to q + 3 are there.
    static constexpr int kSlots = 3;
    static constexpr int kSlotsOfLastGroup = 5;

    int lastGroup(int level) const { return levelsUsed - 1 - level; }
    int slotOf(int level, int r) const;

    MemoryArray<T> storage;
    LinesOfLevel<T> levels[kMaxLevels];
    int levelsUsed;
    int ringMask;
};

extern template class CLevelLines<short>;
extern template class CLevelLines<int>;

}  // namespace qmx
