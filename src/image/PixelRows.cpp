#include "image/PixelRows.h"

#include <cassert>
#include <cstring>

namespace qmx {

template <class T>
void loadRow(CImageData<T>& rows, int slot, int bytesPerPixel, const unsigned char* samples) {
    const PixelKernels& kernels = activeKernels<PixelKernels>();
    const auto count = static_cast<std::size_t>(rows.x);
    T* row = rows.row(0, slot);
    if constexpr (std::is_same_v<T, short>) {
        if (bytesPerPixel == 1) return kernels.widenBytes(row, samples, count);
        if (bytesPerPixel == 3)
            return kernels.separateColours(colourRows<T>(rows, slot).data(), samples, count);
        // Wrapped to 16 bits they are what they were.
        std::memcpy(row, samples, count * sizeof(T));
    } else {
        assert(bytesPerPixel == 2);
        kernels.widenShorts(row, samples, count);
    }
}

template <class T>
void storeRow(const CImageData<T>& rows, int slot, int bytesPerPixel, const CSampleLimit<T>& limit,
              unsigned char* samples) {
    const PixelKernels& kernels = activeKernels<PixelKernels>();
    const auto count = static_cast<std::size_t>(rows.x);
    const T* row = rows.row(0, slot);
    if constexpr (std::is_same_v<T, short>) {
        if (bytesPerPixel == 1) return kernels.narrowToBytes(samples, row, count, limit.range());
        if (bytesPerPixel == 3)
            return kernels.joinColours(samples, colourRows<const T>(rows, slot).data(), count,
                                       limit.range());
        kernels.limitShorts(samples, row, count, limit.range());
    } else {
        assert(bytesPerPixel == 2);
        kernels.narrowToShorts(samples, row, count, limit.range());
    }
}

template void loadRow<short>(CImageData<short>&, int, int, const unsigned char*);
template void loadRow<int>(CImageData<int>&, int, int, const unsigned char*);
template void storeRow<short>(const CImageData<short>&, int, int, const CSampleLimit<short>&,
                              unsigned char*);
template void storeRow<int>(const CImageData<int>&, int, int, const CSampleLimit<int>&,
                            unsigned char*);

}  // namespace qmx
