#pragma once

#include <type_traits>

#include "image/Interleave.h"

namespace qmx {

/// Puts one raw row in memory into row r of image, with the colour transform if there are 3 planes.
/// Requires: samples holds image.x * image.planes samples of type P, at any address; 3 planes are of
/// bytes and short. Format: docs/format.md, 2 Raw images.
template <class P, class T>
void loadRow(CImageData<T>& image, int r, const unsigned char* samples) {
    if constexpr (std::is_same_v<P, unsigned char> && std::is_same_v<T, short>) {
        if (image.planes == 3)
            return activePixelKernels().separateColours(colourRows<T>(image, r).data(), samples,
                                                        static_cast<std::size_t>(image.x));
    }
    deinterleaveRow<P>(samples, image, r);
}

/// Fills the planes of image from raw pixels in memory, with the colour transform if there are 3.
/// Requires: as loadRow; pixels holds image.y rows, strideBytes from one to the next. Format: docs/format.md, 2 Raw images.
template <class P, class T>
void loadPixels(CImageData<T>& image, const void* pixels, std::size_t strideBytes) {
    if (image.x == 0) return;  // pixels may then be null, which takes no offset
    for (int r = 0; r < image.y; ++r)
        loadRow<P>(
            image, r,
            static_cast<const unsigned char*>(pixels) + static_cast<std::size_t>(r) * strideBytes);
}

}  // namespace qmx
