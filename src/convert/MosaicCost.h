#pragma once

#include <optional>

#include "convert/ImageFile.h"

namespace qmx {

/// Bits for each sample of a mosaic and of its four planes, one below the other.
struct MosaicCost {
    double bitsOfMosaic;
    double bitsOfPlanes;
};

/// Finds out whether gray samples look like those behind a Bayer filter, and what it costs to compress them as they
/// stand, by compressing a part of them both ways. Returns: nothing where they do not, or it costs little.
/// Throws: Refusal, std::bad_alloc.
std::optional<MosaicCost> costOfMosaic(const ImageFile& image);

}  // namespace qmx
