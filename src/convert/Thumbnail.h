#pragma once

#include <cstdint>

#include "convert/ImageFile.h"

namespace qmx {

/// Returns: how often an image is best halved by its stream before a thumbnail of it is made: as often as leaves at
/// least twice as many pixels to a side. whole: the geometry of its stream.
std::uint32_t levelsForSide(const tesk_image& whole, std::uint32_t side);

/// Returns: the geometry of the same picture with samples of 8 bits.
tesk_image eightBitGeometry(tesk_image geometry);

/// Makes an image one of at most side x side pixels and 8 bits for a sample: averages its pixels where it is larger, and
/// brings other depths to the whole range of 8 bits. Throws: std::bad_alloc.
void makeThumbnail(ImageFile& image, std::uint32_t side);

}  // namespace qmx
