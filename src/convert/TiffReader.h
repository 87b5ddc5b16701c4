#pragma once

#include "convert/ImageFile.h"

namespace qmx {

/// Reads a TIFF or BigTIFF of one page: gray of 1, 2, 4, 8 and 16 bits, RGB of 8 bits, palettes as RGB; in strips or
/// tiles, its channels together or apart, and compressed in any way that loses nothing.
/// Throws: Refusal, std::bad_alloc.
ImageFile readTiff(ByteView file, const ReadOptions& options);

}  // namespace qmx
