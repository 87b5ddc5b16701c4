#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "bitstream/Memory.h"

namespace qmx {

/// One to three planes of samples, each in its own buffer whose rows are padded to a multiple of 8
/// samples. Format: docs/format.md, 2 Raw images.
template <class T>
class CImageData {
public:
    static constexpr int kMaxPlanes = 3;
    /// Rows are padded to a multiple of this many samples.
    static constexpr int kRowAlignmentSamples = 8;

    /// Planes of width x height samples, uninitialised. Requires: planeMemory outlives the image.
    /// Throws: 5 when planeCount is not 1 to 3; std::bad_alloc.
    CImageData(int width, int height, int planeCount,
               std::pmr::memory_resource* planeMemory = std::pmr::new_delete_resource());
    CImageData(const CImageData&) = delete;
    CImageData& operator=(const CImageData&) = delete;

    /// Returns: width rounded up to a multiple of kRowAlignmentSamples. Beyond 2^31 - 8 it wraps.
    static constexpr int paddedWidth(int width) {
        constexpr auto kLast = static_cast<unsigned>(kRowAlignmentSamples - 1);
        return static_cast<int>((static_cast<unsigned>(width) + kLast) & ~kLast);
    }

    /// Reads one raw image, of 8-bit samples for short and 16-bit ones for int, from the current position
    /// of file, without the colour transform.
    /// Throws: 3 when the file is too short, with the complete rows in place; std::bad_alloc.
    void readRaw(std::FILE* file);

    /// Returns: the mean squared error against other, whose samples are subtracted in the width of
    /// T and so wrap; -1.0 when the geometries differ; NaN for an image without samples.
    double getMSE(const CImageData* other) const;

    T* row(int p, int r) { return plane[p] + static_cast<std::ptrdiff_t>(r) * stride; }
    const T* row(int p, int r) const { return plane[p] + static_cast<std::ptrdiff_t>(r) * stride; }

private:
    MemoryArray<T> rawPlane[kMaxPlanes];

public:
    T* plane[kMaxPlanes] = {};
    int planes;
    int x;
    int y;
    /// Samples from one row to the next.
    int stride;
};

/// Returns: row r of each of three planes, of samples of type T or const T.
/// Requires: image.planes == 3; 0 <= r < image.y.
template <class T, class Image>
std::array<T*, 3> colourRows(Image& image, int r) {
    return {image.row(0, r), image.row(1, r), image.row(2, r)};
}

extern template class CImageData<short>;
extern template class CImageData<int>;

}  // namespace qmx
