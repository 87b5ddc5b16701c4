#pragma once

#include <type_traits>

#include "container/ColourTransform.h"
#include "image/Interleave.h"

namespace qmx {

/// Fills the planes of image from raw pixels in memory, with the colour transform if there are 3.
/// Requires: pixels holds image.y rows of image.x * image.planes samples of type P, strideBytes from
/// one row to the next, at any address. Format: docs/format.md, 2 Raw images.
template <class P, class T>
void loadPixels(CImageData<T>& image, const void* pixels, std::size_t strideBytes) {
    constexpr bool kHasKernel = std::is_same_v<P, unsigned char> && std::is_same_v<T, short>;
    if (image.x == 0) return;  // pixels may then be null, which takes no offset
    const bool isColour = image.planes == 3;
    const PixelKernels& kernels = activePixelKernels();
    for (int r = 0; r < image.y; ++r) {
        const auto* row =
            static_cast<const unsigned char*>(pixels) + static_cast<std::size_t>(r) * strideBytes;
        if constexpr (kHasKernel) {
            if (isColour) {
                const auto count = static_cast<std::size_t>(image.x);
                kernels.separateColours(colourRows<T>(image, r).data(), row, count);
                continue;
            }
        }
        deinterleaveRow<P>(row, image, r);
    }
    if (!kHasKernel) transformColours(image);
}

}  // namespace qmx
