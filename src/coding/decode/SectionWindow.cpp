#include "coding/decode/SectionWindow.h"

#include <algorithm>

namespace qmx {

bool readSignedRunLiterally(SectionWindow& window) {
    const bool negative = window.decoder->readRawBit() != 0;
    window.decoder->readRun();
    window.nextNew += 1 + window.decoder->getRun();
    return negative;
}

std::uint64_t readRefinementLiterally(RefinementBits& bits, int count) {
    if (count == 0) return 0;
    if (bits.span.end != 0) bits.reader->goOnAt(bits.span.next);
    // Two fields, because a reader takes widths modulo 64.
    const int lowWidth = std::min(count, kGroupSize / 2);
    const std::uint64_t low = bits.reader->readInt(lowWidth);
    const std::uint64_t high = bits.reader->readInt(count - lowWidth);
    bits.span = bits.reader->loadedBits();
    return low | high << lowWidth;
}

}  // namespace qmx
