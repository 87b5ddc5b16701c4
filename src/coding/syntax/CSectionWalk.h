#pragma once

#include <optional>

#include "coding/syntax/CSectionCounters.h"
#include "coding/syntax/SectionSyntax.h"

namespace qmx {

/// A section and where it stands. Places count from the first bit behind the stream's header.
struct PlacedSection {
    SectionHeader header{};
    /// The bit plane that the section carries; it carries nothing where the coefficients have no such
    /// bit plane, and may be far below 0.
    std::int64_t bitPlane = 0;
    std::uint64_t firstBit = 0;
    std::uint64_t payloadBit = 0;
    /// Bits of the payload that the data holds.
    std::uint64_t storedBits = 0;

    bool isEmpty() const { return header.lengthBits == 0; }
    bool isCut() const { return storedBits < header.lengthBits; }
    /// The bit behind what the data holds of the section.
    std::uint64_t endBit() const { return payloadBit + storedBits; }
};

/// How the sections of a stream end: at the end mark, with the data, or at a header that names what
/// the image cannot have.
enum class StreamEnd { complete, cut, invalid };

/// Goes through the section headers of a stream as the decoder does, and decodes nothing. Takes no memory and
/// throws nothing, not even within, unless a file turns out to be shorter than it was.
/// Format: docs/format.md, 13.1 Section headers.
class CSectionWalk {
public:
    /// Reads the top plane. Requires: in has counted no bits, stands behind the header of a stream of dataBits
    /// more bits, and outlives this object.
    CSectionWalk(CBitReader& in, std::uint64_t dataBits, const SectionBounds& bounds);

    /// Goes on to the next section. Returns: false, and leaves section alone, when there is none.
    bool next(PlacedSection& section);

    /// How the stream ends. Requires: next has returned false.
    StreamEnd end() const { return *streamEnd; }
    /// Nothing when the data ends inside the field; -1 for no bit planes.
    std::optional<int> topPlane() const { return top; }
    /// The bit behind the end mark, the section or the top plane that was read last.
    std::uint64_t position() const { return behindLast; }

private:
    void readTop();
    /// Reads what follows. Returns: whether it is a section. Throws: what the reader throws.
    bool readNext(PlacedSection& section);

    CBitReader& reader;
    std::uint64_t totalBits;
    SectionBounds limits;
    CSectionCounters counters;
    std::optional<int> top;
    std::optional<StreamEnd> streamEnd;
    std::uint64_t behindLast = 0;
    /// Bits of the last section's payload that have yet to be skipped.
    std::uint64_t pendingBits = 0;
};

}  // namespace qmx
