#pragma once

#include "container/TKHeader.h"

namespace qmx {

// Progress lines on standard output. Those that end in \n are formats for printf, the others go
// through puts.

inline constexpr char kReadingRaw[] = "Reading (into %u-bit array)...\n";
inline constexpr char kCopying[] = "Copying (into %u-bit array)...\n";
inline constexpr char kForwardColour[] = "Transforming YUV...";
inline constexpr char kTransforming[] = "Transforming...";
inline constexpr char kWriting[] = "Writing...";
inline constexpr char kTotals[] = "GetTotal: %zd, total: %zd, size: %ld\n";
inline constexpr char kReadingToMemory[] = "Reading to memory...";
inline constexpr char kReadingStream[] = "Reading...(into %u-bit array)\n";
inline constexpr char kInverseColour[] = "Transforming RGB...";
inline constexpr char kDecompressionError[] = "ERROR: Decompression error %d\n";

/// Bits of a coefficient and of a raw sample as the progress lines print them.
template <class Sample>
inline constexpr unsigned kSampleBits = 8 * sizeof(Sample);
inline unsigned rawSampleBits(const TKHeader& header) {
    return header.bytesPerPixel == 2 ? 16 : 8;
}

}  // namespace qmx
