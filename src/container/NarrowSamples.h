#pragma once

#include <cstddef>

#include "container/CoefficientDispatch.h"

namespace qmx {

// 16-bit coefficients in the place of 32-bit ones.
//
// Plain way: 2-byte samples of more than 11 bits have 32-bit coefficients in memory. Many of them do not need
// them: those of a camera of 12 bits, whatever the header declares. There 16-bit coefficients are the same:
//
//  - As long as no sum overflows, the transforms of both widths are the same. Samples below 2^13 lead to nothing
//    beyond 32644, with five levels of the 5/3 filter and all that their rounding may add.
//  - Every step of the inverse transform takes back a step of the forward transform, modulo 2^16, also where
//    sums overflow. So 16-bit coefficients that restore an image are those of this image; with its samples below
//    2^13 they are its 32-bit coefficients, too, which restore it as well.
//  - Both widths hold coefficients whose highest bit plane is 12, so both read the same from a stream.
//
// A photograph of 12 bits takes 0.9 of the time to compress and 0.8 to decompress (AVX-512, 2026-11-22).

/// Samples below it have the same coefficients in both widths.
inline constexpr unsigned kNarrowSamples = 1U << 13;

/// Returns: whether an image has 32-bit coefficients in memory.
inline bool hasWideCoefficients(const TKHeader& header) {
    return header.bytesPerPixel == 2 &&
           header.bitsPerPixel > static_cast<int>(MostBitsOfShort::inMemory);
}

/// Returns: whether 16-bit coefficients are worth a try: what they restore is what 32-bit ones do if all its
/// samples are below kNarrowSamples. Requires: stream stands behind the header.
bool mayBeNarrow(const TKHeader& header, const unsigned char* stream, std::size_t sizeBytes);

}  // namespace qmx
