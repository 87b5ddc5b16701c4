#pragma once

#include <span>

#include "bitstream/Memory.h"
#include "image/CImageData.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

/// The lines of one level of a plane that are in work at one time. The samples of the level in a row, those
/// at multiples of 2^level, stand side by side.
template <class T>
struct LinesOfLevel {
    /// Slots for lines; level 0 has those of a ring.
    int slots;
    T* first;
    std::ptrdiff_t pitch;
    /// The size of the level, and how many of its columns are filtered vertically, from the left.
    int rows;
    std::size_t columns;
    std::size_t filteredColumns;

    T* line(int slot) const { return first + slot * pitch; }
};

/// Gives levels from `finest` on, whose slots are set, their sizes and the places of their lines: the first in
/// the rows of a plane of ring, the others in the array. Returns: the array, null when it has no lines.
/// Requires: at least one level; ring has the width of the first one, and outlives the lines.
/// Throws: std::bad_alloc.
template <class T>
MemoryArray<T> layOutLines(std::span<LinesOfLevel<T>> levels, const LevelGeometry& finest,
                           CImageData<T>& ring, int plane, std::pmr::memory_resource* memory);

extern template MemoryArray<short> layOutLines<short>(std::span<LinesOfLevel<short>>,
                                                      const LevelGeometry&, CImageData<short>&, int,
                                                      std::pmr::memory_resource*);
extern template MemoryArray<int> layOutLines<int>(std::span<LinesOfLevel<int>>,
                                                  const LevelGeometry&, CImageData<int>&, int,
                                                  std::pmr::memory_resource*);

}  // namespace qmx
