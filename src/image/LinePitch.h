#pragma once

#include <cstddef>
#include <cstdint>

namespace qmx {

/// Lines begin at addresses of whole cache lines, an odd number of them apart: rows a power of two
/// apart would meet in the same few sets of the cache.
inline constexpr std::size_t kCacheLineBytes = 64;

/// Room for moving the first of some lines to such an address.
template <class T>
inline constexpr std::size_t kSpareSamples = kCacheLineBytes / sizeof(T);

/// Returns: the samples from one line of so many columns to the next.
template <class T>
std::size_t pitchSamples(std::size_t columns) {
    const std::size_t cacheLines = (columns * sizeof(T) + kCacheLineBytes - 1) / kCacheLineBytes;
    return (cacheLines | 1) * kCacheLineBytes / sizeof(T);
}

/// Returns: the first address of a whole cache line from address on.
template <class T>
T* alignToCacheLine(T* address) {
    const auto bits = reinterpret_cast<std::uintptr_t>(address);
    const std::size_t spareBytes = (kCacheLineBytes - bits % kCacheLineBytes) % kCacheLineBytes;
    return address + spareBytes / sizeof(T);
}

}  // namespace qmx
