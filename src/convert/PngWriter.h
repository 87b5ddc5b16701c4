#pragma once

#include "convert/IByteSink.h"
#include "convert/ImageFile.h"

namespace qmx {

/// Writes a PNG with what it can hold of the metadata. Gray of up to 8 bits has the least depth that holds its
/// bits. It is compressed quickly: whoever wants the smallest one has other programs.
/// Throws: Refusal, std::bad_alloc.
void writePng(const ImageFile& image, IByteSink& sink);

}  // namespace qmx
