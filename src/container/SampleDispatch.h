#pragma once

#include "container/TKHeader.h"

namespace qmx {

/// 2-byte samples of up to this many bits have 16-bit coefficients, those of more 32-bit ones. The
/// two profiles differ, and streams depend on it (Quirk 18). Format: docs/format.md, 3 Header.
enum class MostBitsOfShort { inFiles = 12, inMemory = 11 };

/// Calls run.template operator()<T, P>() with the coefficient type T and the sample type P that a
/// header asks for. Returns: run's result, or otherwise() when no type fits.
template <class Run, class Otherwise>
auto dispatchSamples(const TKHeader& header, MostBitsOfShort mostBits, Run run,
                     Otherwise otherwise) {
    switch (header.bytesPerPixel) {
        case 1:
        case 3:
            return run.template operator()<short, unsigned char>();
        case 2:
            return header.bitsPerPixel <= static_cast<int>(mostBits)
                       ? run.template operator()<short, unsigned short>()
                       : run.template operator()<int, unsigned short>();
        default:
            return otherwise();
    }
}

}  // namespace qmx
