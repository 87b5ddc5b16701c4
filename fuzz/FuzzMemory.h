#pragma once

#include <cstddef>

namespace fuzz {

/// Planes and buffers of larger images are refused.
inline constexpr std::size_t kLargestAllocationBytes = std::size_t{1} << 20;

/// Returns: memory, or null for more than kLargestAllocationBytes.
void* limitedMalloc(std::size_t sizeBytes);

/// While it lives, operator new keeps to the limit too. The fuzzer itself needs more.
class MemoryLimit {
public:
    MemoryLimit();
    ~MemoryLimit();
    MemoryLimit(const MemoryLimit&) = delete;
    MemoryLimit& operator=(const MemoryLimit&) = delete;
};

}  // namespace fuzz
