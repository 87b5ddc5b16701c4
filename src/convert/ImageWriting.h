#pragma once

#include <vector>

#include "convert/FileFormat.h"
#include "convert/IByteSink.h"
#include "convert/ImageFile.h"

namespace qmx {

/// Requires of a format that it can hold such an image. Throws: Refusal.
void requireHolds(FileFormat format, const tesk_image& geometry);

/// Returns: what the metadata of an image says and a file of that format does not; for a stream, one without a
/// trailer. Throws: std::bad_alloc.
std::vector<LostPart> partsLostIn(FileFormat format, const ImageFile& image);

/// Writes an image, whose samples are of no use afterwards. Throws: Refusal, std::bad_alloc. Requires: the format holds
/// it, and is no stream.
void writeImage(ImageFile& image, FileFormat format, IByteSink& sink);

}  // namespace qmx
