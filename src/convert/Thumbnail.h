#pragma once

#include <cstdint>

#include "convert/ImageFile.h"

namespace qmx {

/// Returns: the least number of halvings after which an image fits a square of side pixels, and at most as many
/// as its stream has. Requires: stream is as tesk_probe knows one; side is not 0.
std::uint32_t levelsForSide(const tesk_image& whole, std::uint32_t side);

/// Returns: the geometry of the same picture with samples of 8 bits.
tesk_image eightBitGeometry(tesk_image geometry);

/// Makes an image one of at most side x side pixels and 8 bits for a sample: averages squares of its pixels where it
/// is larger, and brings other depths to the whole range of 8 bits.
void makeThumbnail(ImageFile& image, std::uint32_t side);

}  // namespace qmx
