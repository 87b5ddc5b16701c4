#pragma once

#include <cstdint>

#include "container/TKHeader.h"

namespace qmx {

/// Returns: bytes that no stream of such an image exceeds, its header included, whatever the samples are and
/// whatever was done so that they come back. Requires: header is supported.
std::uint64_t streamBoundBytes(const TKHeader& header);

}  // namespace qmx
