#pragma once

#include <optional>
#include <string>
#include <vector>

#include "trailer/IPlacedBytes.h"

namespace qmx {

// What may stand in a file behind a complete stream: boxes, with a checksum in front.

inline constexpr std::size_t kTrailerMagicBytes = 8;
inline constexpr char kTrailerMagic[kTrailerMagicBytes + 1] = "TKTRAIL1";
inline constexpr std::size_t kTrailerEndMagicBytes = 4;
inline constexpr char kTrailerEndMagic[kTrailerEndMagicBytes + 1] = "TKT1";
inline constexpr std::size_t kBoxNameBytes = 4;
inline constexpr std::size_t kBoxHeaderBytes = kBoxNameBytes + 4;
inline constexpr char kChecksumBox[kBoxNameBytes + 1] = "crc ";
inline constexpr std::size_t kChecksumBytes = 4;
/// Boxes of a trailer, that of the checksum included.
inline constexpr std::size_t kMostBoxes = 64;
/// What stands in front of the boxes behind the checksum, and behind the last box.
inline constexpr std::size_t kTrailerFrontBytes =
    kTrailerMagicBytes + kBoxHeaderBytes + kChecksumBytes;
inline constexpr std::size_t kTrailerEndBytes = 4 + kTrailerEndMagicBytes;
inline constexpr std::size_t kShortestTrailerBytes = kTrailerFrontBytes + kTrailerEndBytes;

struct TrailerBox {
    /// Any four bytes.
    std::string name;
    /// Where its data begins in the file.
    std::uint64_t offset;
    std::uint32_t sizeBytes;
};

struct Trailer {
    /// Bytes of the stream, behind which the trailer begins.
    std::uint64_t streamBytes = 0;
    /// The checksum that the trailer names.
    std::uint32_t crc = 0;
    /// All boxes but the checksum, in the order of the file. They fill the file up to the trailer's end.
    std::vector<TrailerBox> boxes;

    std::uint64_t boxesOffset() const { return streamBytes + kTrailerFrontBytes; }
    /// Bytes of all of it.
    std::uint64_t sizeBytes() const {
        const std::uint64_t boxesEnd =
            boxes.empty() ? boxesOffset() : boxes.back().offset + boxes.back().sizeBytes;
        return boxesEnd + kTrailerEndBytes - streamBytes;
    }
};

/// Returns: the trailer of a file whose stream has streamBytes bytes; nothing when it has none, or one
/// that is not well-formed, also when the trailer begins elsewhere. The checksum is not compared.
/// Throws: what file throws; std::bad_alloc.
std::optional<Trailer> findTrailer(const IPlacedBytes& file, std::uint64_t streamBytes);

/// Returns: where a trailer would begin by the last bytes of a file, if it does begin there as one does.
/// No stream ends in such bytes but by a chance of 1 in 2^96: where it ends elsewhere, one of both is
/// damaged. Throws: what file throws.
std::optional<std::uint64_t> placeOfTrailer(const IPlacedBytes& file);

/// Returns: the checksum of a file with this trailer, which is trailer.crc when nothing is damaged.
/// Requires: trailer comes from findTrailer with this file. Throws: what file throws; std::bad_alloc.
std::uint32_t checksumOf(const IPlacedBytes& file, const Trailer& trailer);

}  // namespace qmx
