#pragma once

#include "container/TKHeader.h"
#include "image/CImageData.h"

namespace qmx {

/// The tool refuses an image for whose planes, 2 or 4 bytes for each sample, there is no memory, although it
/// makes none: a stream of a few bytes may ask for a raw file of 12.9 GB, and who cannot hold that is not likely
/// to want it. Scripts rely on the answer.
/// Throws: std::bad_alloc. Touches no memory.
template <class T>
void requireMemoryForPlanes(const TKHeader& header) {
    const CImageData<T> untouched(header.xSize, header.ySize, header.planes());
}

}  // namespace qmx
