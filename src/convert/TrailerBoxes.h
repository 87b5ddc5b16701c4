#pragma once

#include <vector>

#include "convert/Buffer.h"
#include "convert/Metadata.h"
#include "trailer/Trailer.h"

namespace qmx {

// Metadata as boxes of a trailer, and back. Format: docs/trailer.md.

/// Returns: a trailer for a stream, with all boxes that metadata fills. Throws: Refusal where it is too long.
std::vector<unsigned char> trailerOf(const Metadata& metadata, ByteView stream);

/// Returns: what the boxes of a file's trailer say. Boxes that are unknown or make no sense are named in notKept.
Metadata metadataOf(ByteView file, const Trailer& trailer);

}  // namespace qmx
