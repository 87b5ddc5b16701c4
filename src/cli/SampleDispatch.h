#pragma once

#include "container/TKHeader.h"

namespace qmx {

/// 2-byte samples of up to this many bits use 16-bit coefficients through files.
/// Format: docs/format.md, 3 Header.
inline constexpr int kMostBitsOfShort = 12;

/// Calls run.template operator()<T, P>() with the coefficient type T and the sample type P that a
/// header asks for. Returns: run's result, or otherwise() when no type fits.
template <class Run, class Otherwise>
int dispatchSamples(const TKHeader& header, Run run, Otherwise otherwise) {
    switch (header.bytesPerPixel) {
        case 1:
        case 3:
            return run.template operator()<short, unsigned char>();
        case 2:
            return header.bitsPerPixel <= kMostBitsOfShort
                       ? run.template operator()<short, unsigned short>()
                       : run.template operator()<int, unsigned short>();
        default:
            return otherwise();
    }
}

}  // namespace qmx
