#pragma once

#include "convert/ImageFile.h"

namespace qmx {

/// Reads a PNG: gray of 1 to 16 bits, RGB of 8 bits, palettes as RGB, interlaced or not.
/// Throws: Refusal, std::bad_alloc.
ImageFile readPng(ByteView file, const ReadOptions& options);

}  // namespace qmx
