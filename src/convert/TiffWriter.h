#pragma once

#include "convert/IByteSink.h"
#include "convert/ImageFile.h"

namespace qmx {

/// Writes a TIFF in Deflate strips, a BigTIFF where it is large, with what it can hold of the metadata. Gray
/// keeps depths of 1, 2 and 4 bits. Throws: Refusal, std::bad_alloc.
void writeTiff(const ImageFile& image, IByteSink& sink);

}  // namespace qmx
