#pragma once

#include "coding/encode/CPlaneEncoder.h"
#include "wavelet/CForwardSweep.h"
#include "wavelet/LevelGeometry.h"
#include "wavelet/LinesOfLevel.h"

namespace qmx {

/// Lines of a sweep that codes what is done at once, so that no plane is needed: odd columns of smooth
/// rows and all columns of detail rows are the coefficients of the order of their level, and come in
/// its scan order. Format: docs/format.md, 7 Orders and scan order.
template <class T>
class CRowLines {
public:
    /// Rows of a level that are in work at one time.
    static constexpr int kRows = 4;

    /// Requires: levelCount >= 1, that of an image of this shape; firstRows, where the rows of the plane
    /// will be, row r in row r % kRows, planeEncoder and memory outlive this object.
    /// Throws: std::bad_alloc.
    CRowLines(const ImageShape& shape, int levelCount, CImageData<T>& firstRows, int plane,
              CPlaneEncoder<T>& planeEncoder, std::pmr::memory_resource* memory);

    int count() const { return levelsUsed; }
    int rows(int level) const { return levels[level].rows; }
    std::size_t columns(int level) const { return levels[level].columns; }
    std::size_t filteredColumns(int level) const { return levels[level].filteredColumns; }
    T* line(int level, int r) const { return levels[level].line(r % kRows); }

    void passOn(int level, int r) {
        encoder.encodeOdds(level, r << level, line(level, r), columns(level),
                           line(level + 1, r / 2));
    }
    void done(int level, int r) {
        const int row = r << level;
        if (r % 2 != 0) return encoder.encodeLine(level, row, line(level, r), columns(level));
        T* smooth = line(levelsUsed, 0);
        encoder.encodeOdds(level, row, line(level, r), columns(level), smooth);
        encoder.encodeLine(levelsUsed, row, smooth, columns(levelsUsed));
    }

private:
    CPlaneEncoder<T>& encoder;
    MemoryArray<T> storage;
    /// Behind the levels one line, of the coarsest order.
    LinesOfLevel<T> levels[kMaxLevels + 1];
    int levelsUsed;
};

extern template class CRowLines<short>;
extern template class CRowLines<int>;

}  // namespace qmx
