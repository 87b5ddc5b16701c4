#pragma once

#include <cstring>

#include "image/CImageData.h"

namespace qmx {

// Rows of raw images are bytes at any address: a sample is copied, not looked at in place.

/// Spreads the samples of one raw row, widened without sign, over the planes of image.
/// Requires: samples holds image.x * image.planes samples of type P; 0 <= r < image.y.
/// Format: docs/format.md, 2 Raw images.
template <class P, class T>
void deinterleaveRow(const void* samples, CImageData<T>& image, int r) {
    for (int p = 0; p < image.planes; ++p) {
        T* row = image.row(p, r);
        const auto* bytes =
            static_cast<const unsigned char*>(samples) + static_cast<std::size_t>(p) * sizeof(P);
        const std::size_t pixelBytes = static_cast<std::size_t>(image.planes) * sizeof(P);
        for (int c = 0; c < image.x; ++c, bytes += pixelBytes) {
            P sample;
            std::memcpy(&sample, bytes, sizeof sample);
            row[c] = static_cast<T>(sample);
        }
    }
}

}  // namespace qmx
