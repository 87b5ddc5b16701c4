#pragma once

#include "convert/ImageFile.h"

namespace qmx {

/// Reads PBM, PGM and PPM, plain ones too, and PAM. The samples of PBM become 0, black, and 1, white.
/// Requires: the file begins with P and a digit from 1 to 7. Throws: Refusal, std::bad_alloc.
ImageFile readPnm(Buffer file, const ReadOptions& options);

}  // namespace qmx
