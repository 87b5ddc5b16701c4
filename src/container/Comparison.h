#pragma once

#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"
#include "container/StreamReading.h"

namespace qmx {

/// What a decoder makes of a stream, beside the image that it was made from.
struct Comparison {
    /// The result of the decoder; 8 when job was stopped.
    int result;
    /// Whether it gives the image, as far as it gives one.
    bool isSame;
    /// The bitwise or of the samples that were compared, of 2 bytes each.
    unsigned usedBits = 0;
};

/// Decodes a stream as decoders of a profile do, and compares. Requires: job.header is its header.
/// Throws: std::bad_alloc, and what job.pixels throws.
Comparison decodeAndCompare(const ImageJob& job, MostBitsOfShort profile,
                            const WrittenStream& stream);

/// Returns: whether the stream is complete and gives the image to decoders of both profiles; false when
/// job was stopped. Requires and throws: as above.
bool restoresExactly(const ImageJob& job, const WrittenStream& stream);

}  // namespace qmx
