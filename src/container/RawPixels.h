#pragma once

#include "container/ColourTransform.h"
#include "image/Interleave.h"

namespace qmx {

/// Fills the planes of image from raw pixels in memory, with the colour transform if there are 3.
/// Requires: pixels holds image.y rows of image.x * image.planes samples of type P, strideBytes from
/// one row to the next, at any address. Format: docs/format.md, 2 Raw images.
template <class P, class T>
void loadPixels(CImageData<T>& image, const void* pixels, std::size_t strideBytes) {
    if (image.x == 0) return;  // pixels may then be null, which takes no offset
    const auto* row = static_cast<const unsigned char*>(pixels);
    for (int r = 0; r < image.y; ++r)
        deinterleaveRow<P>(row + static_cast<std::size_t>(r) * strideBytes, image, r);
    transformColours(image);
}

}  // namespace qmx
