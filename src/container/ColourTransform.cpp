#include "container/ColourTransform.h"

#include <type_traits>

#include "image/ColourPixel.h"
#include "image/PixelKernels.h"

namespace qmx {
namespace {

template <class T, class Convert>
void convertRow(T* const rows[3], int count, Convert convert) {
    for (int c = 0; c < count; ++c) {
        const ColourPixel pixel = convert(rows[0][c], rows[1][c], rows[2][c]);
        rows[0][c] = static_cast<T>(pixel.first);
        rows[1][c] = static_cast<T>(pixel.second);
        rows[2][c] = static_cast<T>(pixel.third);
    }
}

/// Calls convert(rows of the three planes) for every row of an image of three planes.
template <class T, class Convert>
void forEachColourRow(CImageData<T>& image, Convert convert) {
    if (image.planes != 3) return;
    for (int r = 0; r < image.y; ++r)
        convert(colourRows<T>(image, r).data());
}

}  // namespace

// Three planes come from samples of 8 bits, whose coefficients are short: only these have kernels.

template <class T>
void transformColours(CImageData<T>& image) {
    forEachColourRow(image, [&](T* const rows[3]) {
        if constexpr (std::is_same_v<T, short>)
            activePixelKernels().forwardColours(rows, static_cast<std::size_t>(image.x));
        else
            convertRow(rows, image.x, forwardColour);
    });
}

template <class T>
void untransformColours(CImageData<T>& image) {
    forEachColourRow(image, [&](T* const rows[3]) {
        if constexpr (std::is_same_v<T, short>)
            activePixelKernels().inverseColours(rows, static_cast<std::size_t>(image.x));
        else
            convertRow(rows, image.x, inverseColour);
    });
}

template void transformColours<short>(CImageData<short>&);
template void untransformColours<short>(CImageData<short>&);
template void transformColours<int>(CImageData<int>&);
template void untransformColours<int>(CImageData<int>&);

}  // namespace qmx
