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
    /// The same, but the planes are null until allocate.
    struct PlanesLater {};
    CImageData(int width, int height, int planeCount, std::pmr::memory_resource* planeMemory,
               PlanesLater);
    CImageData(const CImageData&) = delete;
    CImageData& operator=(const CImageData&) = delete;

    /// Makes the planes, uninitialised. Requires: there are none. Throws: std::bad_alloc.
    void allocate();

    /// Returns: the bytes that the planes of an image take. Requires: sides of 0 to 65535.
    static std::size_t storageBytes(int width, int height, int planeCount);

    /// Reads one raw image from the current position of file.
    /// Returns: 0. Throws: 3 when the file is too short, with the complete rows in place;
    /// std::bad_alloc.
    template <class P>
    int rawReadT(std::FILE* file);

    /// Returns: the mean squared error against other, whose samples are subtracted in the width of
    /// T and so wrap; -1.0 when the geometries differ; NaN for an image without samples.
    double getMSE(const CImageData* other) const;

    /// Sets every sample of every plane, row padding included, to 0.
    void clear();

    /// Padding aside.
    std::uint64_t samplesPerPlane() const {
        return static_cast<std::uint64_t>(x) * static_cast<std::uint64_t>(y);
    }

    T* row(int p, int r) { return plane[p] + static_cast<std::ptrdiff_t>(r) * stride; }
    const T* row(int p, int r) const { return plane[p] + static_cast<std::ptrdiff_t>(r) * stride; }

private:
    std::size_t planeSamples() const;

    std::pmr::memory_resource* memory;
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
extern template int CImageData<short>::rawReadT<unsigned char>(std::FILE*);
extern template int CImageData<short>::rawReadT<unsigned short>(std::FILE*);
extern template int CImageData<int>::rawReadT<unsigned short>(std::FILE*);

}  // namespace qmx
