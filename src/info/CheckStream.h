#pragma once

#include "info/CStreamFile.h"

namespace qmx {

/// Decodes a stream completely, as the word d does, and drops the image. Returns: how the decoder
/// found that it ends; an invalid one gives no image. Requires: file has a supported header.
/// Throws: FileError; std::bad_alloc when there is no memory for the image.
StreamEnd decodeStream(const CStreamFile& file);

}  // namespace qmx
