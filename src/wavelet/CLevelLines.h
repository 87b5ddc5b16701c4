#pragma once

#include "bitstream/Memory.h"
#include "image/CImageData.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

/// The lines that a sweep over all levels of a plane works on. Level 0 is the plane itself. The lines
/// of a deeper level l, the samples at multiples of 2^l, stand side by side; there is room for those
/// that are in work at one time.
///
/// A line waits the longer for deeper levels, or runs the farther ahead of finer ones, the more levels
/// it belongs to. So lines are grouped by that: row r belongs to the group of its trailing zero bits,
/// as far as there are deeper levels; each group has a few slots, which its rows take in turn.
template <class T>
class CLevelLines {
public:
    /// Requires: levels >= 1, as for an image of this size; memory outlives the lines.
    /// Throws: std::bad_alloc.
    CLevelLines(const CImageData<T>& image, int levelCount, std::pmr::memory_resource* memory);

    /// Chooses the plane to work on. Requires: of the size and stride of the image.
    void setPlane(T* firstSample) { setRing(firstSample, 0); }
    /// Chooses rows of which only the last ones are there: row r at r modulo rowCount, a power of two;
    /// 0 for all rows. Requires: of the width and stride of the image.
    void setRing(T* firstSample, int rowCount) {
        levels[0].first = firstSample;
        planeRowMask = rowCount - 1;
    }

    int count() const { return levelsUsed; }
    int rows(int level) const { return levels[level].rows; }
    std::size_t columns(int level) const { return levels[level].columns; }
    /// Returns: the columns that are filtered vertically, from the left.
    std::size_t filteredColumns(int level) const { return levels[level].filteredColumns; }

    /// Returns: row r of a level. Requires: 0 <= r < rows(level).
    T* line(int level, int r) const {
        const Level& of = levels[level];
        return of.first +
               static_cast<std::ptrdiff_t>(level == 0 ? r & planeRowMask : of.slotOf(r)) * of.pitch;
    }

private:
    // The inverse sweep needs the most, because its deeper levels run ahead. A step of a level takes in
    // a smooth row and the detail row behind it and begins when the finer level needs the row two
    // before. In rows of the plane: row q 2^t of level l, q odd, is gathered for level l + t at
    // (q - 5) 2^(l + t), and given away to level l - 1 at q 2^(l + t) - 2^(l + 1), which is after the
    // next but one of its group, (q + 4) 2^t, has been gathered, and before the one behind it. In the
    // last group a step takes in two rows.
    static constexpr int kSlots = 3;
    static constexpr int kSlotsOfLastGroup = 5;

    struct Level {
        T* first;
        std::ptrdiff_t pitch;
        int rows;
        std::size_t columns;
        std::size_t filteredColumns;
        int lastGroup;

        int slots() const { return kSlots * lastGroup + kSlotsOfLastGroup; }
        int slotOf(int r) const;
    };

    MemoryArray<T> storage;
    Level levels[kMaxLevels];
    int levelsUsed;
    int planeRowMask = -1;
};

extern template class CLevelLines<short>;
extern template class CLevelLines<int>;

}  // namespace qmx
