#include "image/CImageData.h"

#include <algorithm>
#include <limits>
#include <new>
#include <type_traits>

#include "bitstream/Throwing.h"
#include "image/HugePages.h"
#include "image/Interleave.h"

namespace qmx {
namespace {

/// Rounds width up to whole rows of padding; wraps like the 32-bit field that holds it.
template <class T>
int paddedWidth(int width) {
    constexpr auto kLast = static_cast<unsigned>(CImageData<T>::kRowAlignmentSamples - 1);
    return static_cast<int>((static_cast<unsigned>(width) + kLast) & ~kLast);
}

/// Returns: a sample count as an array length. Throws: std::bad_array_new_length.
template <class T>
std::size_t arrayLength(std::int64_t samples) {
    constexpr auto kMost =
        std::numeric_limits<std::ptrdiff_t>::max() / static_cast<std::ptrdiff_t>(sizeof(T));
    if (samples < 0 || samples > kMost) throw std::bad_array_new_length();
    return static_cast<std::size_t>(samples);
}

/// Planes begin at whole cache lines. The format asks for less; vectors of rows of a multiple of 32
/// samples then never cross from one line into the next.
constexpr std::size_t kPlaneAlignmentBytes = 64;
/// These pay for it.
template <class T>
constexpr std::size_t kSpareSamples = kPlaneAlignmentBytes / sizeof(T);

template <class T>
T* alignUp(T* storage) {
    const auto address = reinterpret_cast<std::uintptr_t>(storage);
    const std::size_t spareBytes =
        (kPlaneAlignmentBytes - address % kPlaneAlignmentBytes) % kPlaneAlignmentBytes;
    return storage + spareBytes / sizeof(T);
}

}  // namespace

template <class T>
CImageData<T>::CImageData(int width, int height, int planeCount,
                          std::pmr::memory_resource* planeMemory)
    : CImageData(width, height, planeCount, planeMemory, PlanesLater{}) {
    allocate();
}

template <class T>
CImageData<T>::CImageData(int width, int height, int planeCount,
                          std::pmr::memory_resource* planeMemory, PlanesLater)
    : memory(planeMemory), planes(planeCount), x(width), y(height), stride(paddedWidth<T>(width)) {
    static_assert(std::is_same_v<T, short> || std::is_same_v<T, int>);
    if (planes < 1 || planes > kMaxPlanes) throwBadPlaneCount();
}

template <class T>
void CImageData<T>::allocate() {
    const std::size_t samples = planeSamples();
    const bool isDefaultMemory = memory->is_equal(*std::pmr::new_delete_resource());
    for (int p = 0; p < planes; ++p) {
        rawPlane[p] = makeArray<T>(samples, memory);
        if (isDefaultMemory) adviseHugePages(rawPlane[p].get(), samples * sizeof(T));
        plane[p] = alignUp(rawPlane[p].get());
    }
}

template <class T>
std::size_t CImageData<T>::planeSamples() const {
    return arrayLength<T>(std::int64_t{stride} * y + std::int64_t{kSpareSamples<T>});
}

template <class T>
std::size_t CImageData<T>::storageBytes(int width, int height, int planeCount) {
    const std::size_t samples = arrayLength<T>(std::int64_t{paddedWidth<T>(width)} * height +
                                               std::int64_t{kSpareSamples<T>});
    return samples * sizeof(T) * static_cast<std::size_t>(planeCount);
}

template <class T>
void CImageData<T>::clear() {
    for (int p = 0; p < planes; ++p)
        std::fill_n(rawPlane[p].get(), planeSamples(), T{0});
}

template <class T>
template <class P>
int CImageData<T>::rawReadT(std::FILE* file) {
    const std::size_t rowSamples = arrayLength<P>(std::int64_t{x} * planes);
    const std::unique_ptr<P[]> samples(new P[rowSamples]);
    for (int r = 0; r < y; ++r) {
        if (std::fread(samples.get(), sizeof(P), rowSamples, file) < rowSamples) throwEndOfStream();
        deinterleaveRow<P>(samples.get(), *this, r);
    }
    return 0;
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
template int CImageData<short>::rawReadT<unsigned char>(std::FILE*);
template int CImageData<short>::rawReadT<unsigned short>(std::FILE*);
template int CImageData<int>::rawReadT<unsigned short>(std::FILE*);

}  // namespace qmx
