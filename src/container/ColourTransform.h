#pragma once

#include "image/CImageData.h"

namespace qmx {

// In place on all pixels; an image that does not have 3 planes stays as it is.
// Format: docs/format.md, 5 Colour transform.

/// Red, green, blue to luma and two differences.
template <class T>
void transformColours(CImageData<T>& image);

/// The exact inverse. Values that a cut stream left outside the range of a pixel stay outside.
template <class T>
void untransformColours(CImageData<T>& image);

extern template void transformColours<short>(CImageData<short>&);
extern template void untransformColours<short>(CImageData<short>&);
extern template void transformColours<int>(CImageData<int>&);
extern template void untransformColours<int>(CImageData<int>&);

}  // namespace qmx
