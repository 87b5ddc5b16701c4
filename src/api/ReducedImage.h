#pragma once

#include "api/tesk.h"
#include "image/ImageShape.h"

namespace qmx {

/// Turns the shape of an image into that of its picture at 1 : 2^levels. Returns: TESK_OK;
/// TESK_UNSUPPORTED_FORMAT, with shape as it was, when the image has fewer levels.
tesk_status reduceShape(ImageShape& shape, std::uint32_t levels);

}  // namespace qmx
