#pragma once

#include <cstddef>

namespace qmx {

/// Returns: the bitwise or of samples, of 2 bytes each where a pixel has 2, else of 1.
unsigned usedBitsOf(const unsigned char* samples, std::size_t sizeBytes, int bytesPerPixel);

}  // namespace qmx
