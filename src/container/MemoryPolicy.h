#pragma once

#include "container/ImageJob.h"

namespace qmx {

/// The tool refuses an image for whose planes there is no memory, although it makes none: a stream of a few
/// bytes may ask for a raw file of 12.9 GB, and who cannot hold that is not likely to want it.
/// Throws: std::bad_alloc. Touches no memory.
template <class T>
void requireMemoryForPlanes(const TKHeader& header) {
    const CImageData<T> untouched(header.xSize, header.ySize, header.planes());
}

}  // namespace qmx
