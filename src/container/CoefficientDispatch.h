#pragma once

#include "container/TKHeader.h"

namespace qmx {

/// 2-byte samples of up to this many bits have 16-bit coefficients, those of more 32-bit ones. The
/// profiles of files and of memory differ, and streams depend on it (Quirk 17). Narrow samples are those of
/// NarrowSamples.h. Format: docs/format.md, 3 Header.
enum class MostBitsOfShort { inFiles = 12, inMemory = 11, ofNarrowSamples = 16 };

/// Calls run.template operator()<T>() with the coefficient type T that a header asks for.
/// Returns: run's result, or otherwise() when no type fits.
template <class Run, class Otherwise>
auto dispatchCoefficients(const TKHeader& header, MostBitsOfShort mostBits, Run run,
                          Otherwise otherwise) {
    if (!header.isSupported()) return otherwise();
    const bool isShort =
        header.bytesPerPixel != 2 || header.bitsPerPixel <= static_cast<int>(mostBits);
    return isShort ? run.template operator()<short>() : run.template operator()<int>();
}

}  // namespace qmx
