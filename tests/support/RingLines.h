#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "image/CImageData.h"
#include "image/ImageShape.h"
#include "wavelet/CForwardSweep.h"
#include "wavelet/LevelGeometry.h"

namespace test {

/// The lines of a CForwardSweep over one plane: of each level as few rows as it may have, and nothing
/// that codes them.
template <class T, class Take>
class RingLines {
public:
    /// take(level, r, line, columns) is called for each row that is done, its even columns included,
    /// whether they are passed on or not. An image without levels has one.
    RingLines(const qmx::ImageShape& shape, Take takeRow) : take(takeRow) {
        const int levels = std::max(qmx::levelCount(shape.width, shape.height), 1);
        for (int l = 0; l < levels; ++l) {
            const int columnsOfLevel = (shape.width - 1) / (1 << l) + 1;
            rings.push_back(std::make_unique<qmx::CImageData<T>>(columnsOfLevel, kRows, 1));
            geometries.push_back({shape.width, shape.height, 1 << l});
        }
    }

    int count() const { return static_cast<int>(rings.size()); }
    int rows(int level) const { return of(level).samplesPerColumn(); }
    std::size_t columns(int level) const {
        return static_cast<std::size_t>(of(level).samplesPerRow());
    }
    std::size_t filteredColumns(int level) const {
        return static_cast<std::size_t>(of(level).filteredColumns());
    }
    T* line(int level, int r) { return rings[static_cast<std::size_t>(level)]->row(0, r % kRows); }

    void passOn(int level, int r) {
        done(level, r);
        for (std::size_t c = 0; c < columns(level + 1); ++c)
            line(level + 1, r / 2)[c] = line(level, r)[2 * c];
    }
    void done(int level, int r) { take(level, r, line(level, r), columns(level)); }

private:
    static constexpr int kRows = 4;

    const qmx::LevelGeometry& of(int level) const {
        return geometries[static_cast<std::size_t>(level)];
    }

    Take take;
    std::vector<std::unique_ptr<qmx::CImageData<T>>> rings;
    std::vector<qmx::LevelGeometry> geometries;
};

/// Transforms plane p of an image row by row; take as RingLines has it.
template <class T, class Take>
void sweepForward(const qmx::CImageData<T>& image, int p, Take take) {
    RingLines<T, Take> lines({image.x, image.y, 1}, take);
    qmx::CForwardSweep<T, RingLines<T, Take>> sweep(lines);
    for (int r = 0; r < image.y; ++r) {
        std::copy_n(image.row(p, r), image.x, lines.line(0, r));
        sweep.takeRow(r);
    }
}

/// Returns: the coefficients of plane p of an image, each at its place.
template <class T>
std::vector<T> coefficientsOf(const qmx::CImageData<T>& image, int p) {
    std::vector<T> plane(static_cast<std::size_t>(image.x) * static_cast<std::size_t>(image.y));
    // Deeper levels come after finer ones.
    sweepForward(image, p, [&](int level, int r, const T* line, std::size_t columns) {
        const std::size_t row = static_cast<std::size_t>(r) << level;
        for (std::size_t c = 0; c < columns; ++c)
            plane[row * static_cast<std::size_t>(image.x) + (c << level)] = line[c];
    });
    return plane;
}

}  // namespace test
