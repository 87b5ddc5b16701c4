#pragma once

#include "convert/IByteSink.h"
#include "convert/ImageFile.h"

namespace qmx {

/// Writes a PNG with what it can hold of the metadata. Gray of up to 8 bits has the least depth that holds its
/// bits. It is compressed quickly: whoever wants the smallest one has other programs.
/// Throws: Refusal, std::bad_alloc.
void writePng(const ImageFile& image, IByteSink& sink);

/// Whether a PNG of the image has its colour profile, if it has one. libpng leaves out what it finds wrong, as a
/// profile of RGB for gray. Throws: std::bad_alloc.
bool keepsProfile(const ImageFile& image);

}  // namespace qmx
