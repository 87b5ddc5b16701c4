#pragma once

#include <optional>

#include "info/CStreamFile.h"
#include "trailer/Trailer.h"

namespace qmx {

/// What can be said about a stream from its section headers alone.
struct StreamReport {
    TKHeader header{};
    std::uint64_t fileBytes = 0;
    int levels = -1;
    /// Bits of a coefficient, as the word d takes them.
    int coefficientBits = 0;
    std::optional<int> topPlane;
    StreamEnd end = StreamEnd::cut;
    std::uint64_t sections = 0;
    std::uint64_t emptySections = 0;
    /// The stream bit behind what was read last, and the bits of the file from there on: end mark and
    /// padding, a header that is cut, or what follows where the stream is invalid.
    std::uint64_t endBit = 0;
    std::uint64_t restBits = 0;
    /// Bytes of the stream, without what follows the padding of a complete one.
    std::uint64_t streamBytes = 0;
    /// Bytes of the shortest prefix with a first picture, 0 for none.
    std::uint64_t firstPictureBytes = 0;
    /// What stands behind a complete stream, if that is a trailer.
    std::optional<Trailer> trailer;
    /// The file ends as one with a trailer that begins where the stream does not end.
    bool hasStrayTrailer = false;
    /// The checksum that the trailer should have, once it was computed.
    std::optional<std::uint32_t> checksum;

    std::uint64_t trailingBytes() const { return fileBytes - streamBytes; }
    /// Whether whole bytes follow a complete stream that are no trailer. A length that lies, or damage,
    /// can lead to an end mark in the middle of a stream; bytes that somebody added look the same.
    /// Format: docs/format.md, 15 Images that do not come back. The end mark may also be a chance among
    /// the last bits of a trailer.
    bool isDoubtful() const {
        const bool ends = end == StreamEnd::complete;
        return ends && (hasStrayTrailer || (trailingBytes() != 0 && !trailer));
    }
    /// Whether the bytes of stream and trailer are known to be others than those that were written.
    bool isDamaged() const {
        return end == StreamEnd::complete && trailer && checksum && *checksum != trailer->crc;
    }
    std::uint64_t samples() const {
        return std::uint64_t{header.xSize} * header.ySize *
               static_cast<std::uint64_t>(header.planes());
    }
    /// Bits of the stream for each sample. Requires: samples() is not 0.
    double bitsPerSample() const {
        return 8.0 * static_cast<double>(streamBytes) / static_cast<double>(samples());
    }
};

/// Reads all section headers. Takes time proportional to the number of sections, and no memory that
/// depends on what the stream says. Requires: file has a supported header. Throws: FileError.
StreamReport describeStream(const CStreamFile& file);

/// Returns: the byte of the file in which a stream bit stands; and which bit of it that is.
constexpr std::uint64_t byteOfStreamBit(std::uint64_t streamBit) {
    return sizeof(TKHeader) + streamBit / 8;
}
constexpr int bitInByte(std::uint64_t streamBit) {
    return static_cast<int>(streamBit % 8);
}

}  // namespace qmx
