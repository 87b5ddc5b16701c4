#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "coding/encode/CodedFacts.h"
#include "coding/syntax/CSectionWalk.h"
#include "container/TKHeader.h"

namespace qmx {

/// A stream as it was written, and how far its sections are those that decoders find.
struct WrittenStream {
    /// Behind the header.
    const unsigned char* bytes = nullptr;
    std::size_t sizeBytes = 0;
    /// CodedFacts::misreadBit of the encoder.
    std::uint64_t misreadBit = CodedFacts::kNeverMisread;
};

/// Where a walk over the sections of a stream came to.
struct WalkEnd {
    StreamEnd end;
    /// The bit at which the last section that it found begins.
    std::optional<std::uint64_t> lastSection;
    /// The bit behind what it found.
    std::uint64_t position;
};

/// Walks over the sections of a stream in memory, allocates nothing. Requires: header belongs to it and is
/// supported.
WalkEnd walkSections(const TKHeader& header, const WrittenStream& stream);

/// What decoders make of the sections of a stream that may have been cut.
/// Format: docs/format.md, 15 Images that do not come back.
enum class Reading {
    /// What was written, up to the end mark: at most padding was cut off.
    whole,
    /// What was written, up to the cut.
    part,
    /// Behind a section that is longer than its length field can say they take other bits for sections.
    wrong,
    /// The same, and they refuse the stream as invalid.
    refused,
};

/// Returns: what decoders make of stream. Requires: header belongs to it and is supported.
Reading readingOf(const TKHeader& header, const WrittenStream& stream);

/// Returns: whether decoders come to the end mark behind all sections. If not, they may meet one that is
/// none, and take prefixes for the whole. Requires: as above; stream is complete and has streamBits bits.
bool endsAtItsEnd(const TKHeader& header, const WrittenStream& stream, std::uint64_t streamBits);

}  // namespace qmx
