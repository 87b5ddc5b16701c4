#include "image/UsedBits.h"

#include "bitstream/WordBytes.h"

namespace qmx {

unsigned usedBitsOf(const unsigned char* samples, std::size_t sizeBytes, int bytesPerPixel) {
    std::uint64_t all = 0;
    std::size_t i = 0;
    for (; i + kWordBytes <= sizeBytes; i += kWordBytes)
        all |= loadWord(samples + i);
    for (; i < sizeBytes; ++i)
        all |= std::uint64_t{samples[i]} << (8 * (i % kWordBytes));
    all |= all >> 32;
    all |= all >> 16;
    if (bytesPerPixel == 2) return all & 0xFFFF;
    return (all | all >> 8) & 0xFF;
}

}  // namespace qmx
