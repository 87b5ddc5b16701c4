#pragma once

#include <cstdint>
#include <vector>

#include "ReferenceImage.h"

namespace reference {

/// The raw file of a stream and how the stream ended.
struct Decoded {
    int status;                        ///< 0 complete, 4 ended early (cut), 128 invalid
    std::vector<unsigned char> bytes;  ///< empty if invalid
};

/// Decodes a stream file, header included, in the file profile. With a sectionLimit of n >= 1 the
/// decoder stops on purpose behind the n-th section, and the stream counts as cut
/// (docs/format.md, 13.1); 0 sets no limit. A pauseRow of at least 1, if there is such a row, takes the
/// stream for one whose encoder was paused behind it: what is left out is 0 (docs/format.md, 15).
Decoded decode(const std::vector<unsigned char>& streamFile, std::uint64_t sectionLimit = 0,
               int pauseRow = 0);

/// The reduced pictures of a stream file, at 1 : 1, 1 : 2, and so on, for all levels that the image has
/// (docs/format.md, 17). The first one is the image; there is none if the stream is invalid.
std::vector<Decoded> decodeReduced(const std::vector<unsigned char>& streamFile);

}  // namespace reference
