#pragma once

#include <cstdint>

namespace qmx {

/// What an encoder knows about the stream of an image without looking at it.
struct CodedFacts {
    static constexpr std::uint64_t kNeverMisread = ~std::uint64_t{0};

    /// Levels of the image.
    int levels = -1;
    /// The exact length of the complete stream.
    std::uint64_t streamBits = 0;
    /// The first bit of the stream written last that decoders take for a section header and that is none:
    /// it belongs to a section that is longer than its length field can say. kNeverMisread when no such
    /// section was written.
    std::uint64_t misreadBit = kNeverMisread;

    // What makes a complete stream lose its image.
    // Format: docs/format.md, 15 Images that do not come back.

    /// Sections whose length does not fit its field.
    std::uint64_t overlongSections = 0;
    /// Coefficients that do not fit their type when they are folded, and count as 0.
    std::uint64_t lostCoefficients = 0;
    /// Sections without new coefficients that cover more than a decoder passes over.
    std::uint64_t endlessSections = 0;

    std::uint64_t streamBytes() const { return (streamBits + 7) / 8; }
};

}  // namespace qmx
