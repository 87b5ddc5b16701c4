#pragma once

#include <cstdint>

#include "convert/ImageFile.h"

namespace qmx {

/// Adds notes on samples that stand so that their stream is longer than it need be, with what that costs: those
/// that stand too far left, and mosaics of colour filters. Requires: bits per pixel are set; used is that of
/// usedBitsOf. Throws: Refusal, std::bad_alloc.
void addSampleNotes(ImageFile& image, std::uint32_t used);

}  // namespace qmx
