#pragma once

#include "image/CImageData.h"

namespace qmx {

/// Spreads the samples of one raw row, widened without sign, over the planes of image.
/// Requires: samples holds image.x * image.planes samples; 0 <= r < image.y.
/// Format: docs/format.md, 2 Raw images.
template <class T, class P>
void deinterleaveRow(const P* samples, CImageData<T>& image, int r) {
    for (int p = 0; p < image.planes; ++p) {
        T* row = image.row(p, r);
        const P* sample = samples + p;
        for (int c = 0; c < image.x; ++c, sample += image.planes)
            row[c] = static_cast<T>(*sample);
    }
}

}  // namespace qmx
