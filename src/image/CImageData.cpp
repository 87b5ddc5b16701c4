#include "image/CImageData.h"

#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>

#include "bitstream/Throwing.h"
#include "image/LinePitch.h"
#include "image/PixelKernels.h"

namespace qmx {
namespace {

/// Returns: a sample count as an array length. Throws: std::bad_array_new_length.
template <class T>
std::size_t arrayLength(std::int64_t samples) {
    constexpr auto kMost =
        std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::ptrdiff_t>(sizeof(T));
    if (samples < 0 || samples > kMost) throw std::bad_array_new_length();
    return static_cast<std::size_t>(samples);
}

/// Spreads a raw row over the planes, widened without sign.
template <class T>
void separate(const unsigned char* samples, CImageData<T>& image, int r) {
    const PixelKernels& kernels = activeKernels<PixelKernels>();
    const auto count = static_cast<std::size_t>(image.x);
    if constexpr (std::is_same_v<T, int>) {
        kernels.widenShorts(image.row(0, r), samples, count);
    } else if (image.planes == 3) {
        kernels.separateBytes(colourRows<T>(image, r).data(), samples, count);
    } else {
        kernels.widenBytes(image.row(0, r), samples, count);
    }
}

}  // namespace

template <class T>
CImageData<T>::CImageData(int width, int height, int planeCount,
                          std::pmr::memory_resource* planeMemory)
    : planes(planeCount), x(width), y(height), stride(paddedWidth(width)) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    if (planes < 1 || planes > kMaxPlanes) throwBadPlaneCount();
    // Planes begin at whole cache lines. The format asks for less; vectors of rows of a multiple of 32
    // samples then never cross from one line into the next.
    const std::size_t samples =
        arrayLength<T>(std::int64_t{stride} * y + std::int64_t{kSpareSamples<T>});
    for (int p = 0; p < planes; ++p) {
        rawPlane[p] = makeArray<T>(samples, planeMemory);
        plane[p] = alignToCacheLine(rawPlane[p].get());
    }
}

template <class T>
void CImageData<T>::readRaw(std::FILE* file) {
    const std::size_t sampleBytes = sizeof(T) / 2;
    const std::size_t rowBytes = arrayLength<T>(std::int64_t{x} * planes) * sampleBytes;
    const auto samples = std::make_unique_for_overwrite<unsigned char[]>(rowBytes);
    for (int r = 0; r < y; ++r) {
        if (std::fread(samples.get(), 1, rowBytes, file) < rowBytes) throwEndOfStream();
        separate(samples.get(), *this, r);
    }
}

template <class T>
double CImageData<T>::getMSE(const CImageData* other) const {
    if (x != other->x || y != other->y || planes != other->planes) return -1.0;
    double sum = 0.0;
    for (int p = 0; p < planes; ++p) {
        for (int r = 0; r < y; ++r) {
            const T* mine = row(p, r);
            const T* theirs = other->plane[p] + (mine - plane[p]);
            for (int c = 0; c < x; ++c) {
                const auto d = static_cast<T>(static_cast<unsigned>(theirs[c]) -
                                              static_cast<unsigned>(mine[c]));
                sum += static_cast<double>(d) * d;
            }
        }
    }
    return sum / x / y / planes;
}

template class CImageData<short>;
template class CImageData<int>;
}  // namespace qmx
