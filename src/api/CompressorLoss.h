#pragma once

#include "container/Loss.h"

namespace qmx {

class CTeskCompressor;

/// Finds out whether the stream of compressor restores its image; hasRate: what the budget cut off is not
/// a loss. Requires: compress has returned 0 or 4 and there is a block.
/// Throws: std::bad_alloc, for images that have to be compared.
LossReport findLoss(CTeskCompressor& compressor, bool hasRate = false);

}  // namespace qmx
