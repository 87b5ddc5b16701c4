#include "container/ColourTransform.h"

#include "image/ColourPixel.h"

namespace qmx {
namespace {

template <class T, class Convert>
void convertPixels(CImageData<T>& image, Convert convert) {
    if (image.planes != 3) return;
    for (int r = 0; r < image.y; ++r) {
        T* first = image.row(0, r);
        T* second = image.row(1, r);
        T* third = image.row(2, r);
        for (int c = 0; c < image.x; ++c) {
            const ColourPixel pixel = convert(first[c], second[c], third[c]);
            first[c] = static_cast<T>(pixel.first);
            second[c] = static_cast<T>(pixel.second);
            third[c] = static_cast<T>(pixel.third);
        }
    }
}

}  // namespace

template <class T>
void transformColours(CImageData<T>& image) {
    convertPixels(image, [](int r, int g, int b) { return forwardColour(r, g, b); });
}

template <class T>
void untransformColours(CImageData<T>& image) {
    convertPixels(image, [](int y, int dr, int db) { return inverseColour(y, dr, db); });
}

template void transformColours<short>(CImageData<short>&);
template void untransformColours<short>(CImageData<short>&);
template void transformColours<int>(CImageData<int>&);
template void untransformColours<int>(CImageData<int>&);

}  // namespace qmx
