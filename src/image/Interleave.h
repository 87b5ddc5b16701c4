#pragma once

#include <cstring>
#include <type_traits>

#include "image/CImageData.h"
#include "image/PixelKernels.h"

namespace qmx {

// Rows of raw images are bytes at any address: a sample is copied, not looked at in place.

/// Spreads the samples of one raw row, widened without sign, over the planes of image, one by one.
template <class P, class T>
void deinterleaveSamples(const unsigned char* samples, CImageData<T>& image, int r) {
    const std::size_t pixelBytes = static_cast<std::size_t>(image.planes) * sizeof(P);
    for (int p = 0; p < image.planes; ++p) {
        T* row = image.row(p, r);
        const unsigned char* bytes = samples + static_cast<std::size_t>(p) * sizeof(P);
        for (int c = 0; c < image.x; ++c, bytes += pixelBytes) {
            P sample;
            std::memcpy(&sample, bytes, sizeof sample);
            row[c] = static_cast<T>(sample);
        }
    }
}

/// The same, by kernels where there is one.
/// Requires: samples holds image.x * image.planes samples of type P; 0 <= r < image.y.
/// Format: docs/format.md, 2 Raw images.
template <class P, class T>
void deinterleaveRow(const void* samples, CImageData<T>& image, int r) {
    constexpr bool kIsByte = std::is_same_v<P, unsigned char>;
    constexpr bool kIsShort = std::is_same_v<T, short>;
    const auto* bytes = static_cast<const unsigned char*>(samples);
    const auto count = static_cast<std::size_t>(image.x);
    if constexpr (kIsByte && kIsShort) {
        if (image.planes == 1)
            return activePixelKernels().widenBytes(image.row(0, r), bytes, count);
        if (image.planes == 3)
            return activePixelKernels().separateBytes(colourRows<T>(image, r).data(), bytes, count);
    } else if constexpr (!kIsByte && kIsShort) {
        // Wrapped to 16 bits they are what they were.
        if (image.planes == 1) {
            std::memcpy(image.row(0, r), bytes, count * sizeof(T));
            return;
        }
    } else if constexpr (!kIsByte) {
        if (image.planes == 1)
            return activePixelKernels().widenShorts(image.row(0, r), bytes, count);
    }
    deinterleaveSamples<P>(bytes, image, r);
}

}  // namespace qmx
