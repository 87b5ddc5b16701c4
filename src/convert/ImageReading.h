#pragma once

#include "convert/ConvertOptions.h"

namespace qmx {

/// Reads an image of any format, with the bits of its samples, and notes on them.
/// Throws: Refusal, std::bad_alloc. Requires: it is no stream, unless options.raw says how it stands.
ImageFile readImage(Buffer file, const ConvertOptions& options);

}  // namespace qmx
