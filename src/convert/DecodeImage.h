#pragma once

#include "convert/CTeskCodec.h"
#include "convert/ConvertOptions.h"
#include "convert/FileFormat.h"
#include "convert/TeskFile.h"

namespace qmx {

/// Decodes the image of a stream for a format, at the size that the options ask for, with its metadata.
/// Throws: Refusal where the image has more pixels than the options allow, or the format does not hold it;
/// std::bad_alloc.
ImageFile decodeImage(const TeskFile& opened, FileFormat format, const ConvertOptions& options,
                      CTeskCodec& codec);

}  // namespace qmx
