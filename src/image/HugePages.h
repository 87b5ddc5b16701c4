#pragma once

#include <cstddef>

namespace qmx {

/// Asks the system for large pages where they pay: fewer page faults when the block is first touched.
/// A hint: nothing else changes, errno included. Does nothing for small blocks.
/// Requires: the block is mapped; it comes from malloc or new, because the hint outlives it in an
/// allocator that keeps its memory.
void adviseHugePages(void* block, std::size_t sizeBytes);

}  // namespace qmx
