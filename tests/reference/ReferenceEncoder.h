#pragma once

#include <cstdint>
#include <vector>

#include "ReferenceImage.h"

namespace reference {

/// Encodes without a limit, in the file profile, and returns the whole stream file with its header.
/// A pauseRow of at least 1 pauses behind that row (docs/format.md, 15); 0 does not pause. The
/// result is empty if the raw file is too short (docs/format.md, 2) or its bytes per pixel are not
/// supported.
std::vector<unsigned char> encode(const RawImage& image, int pauseRow = 0);

/// The same stream cut so that the file has at most `budgetBytes` bytes, but never less than its
/// header (docs/format.md, 12.2). Samples that the raw file lacks are 0.
std::vector<unsigned char> encodeCut(const RawImage& image, std::uint64_t budgetBytes,
                                     int pauseRow = 0);

}  // namespace reference
