#include "trailer/Trailer.h"

#include <algorithm>
#include <array>

#include "bitstream/CReflectedCrc.h"
#include "bitstream/WordBytes.h"

namespace qmx {
namespace {

/// Returns: sizeBytes bytes of a file as text.
std::string textAt(const IPlacedBytes& file, std::uint64_t offset, std::size_t sizeBytes) {
    std::array<unsigned char, kTrailerMagicBytes> bytes;
    file.read(offset, std::span(bytes).first(sizeBytes));
    return {bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(sizeBytes)};
}

std::uint32_t numberAt(const IPlacedBytes& file, std::uint64_t offset) {
    std::array<unsigned char, 4> bytes;
    file.read(offset, bytes);
    return loadNumber(bytes.data());
}

/// Returns: the box at an offset, which must end before endOffset.
std::optional<TrailerBox> boxAt(const IPlacedBytes& file, std::uint64_t offset,
                                std::uint64_t endOffset) {
    if (endOffset - offset < kBoxHeaderBytes) return std::nullopt;
    TrailerBox box{textAt(file, offset, kBoxNameBytes), offset + kBoxHeaderBytes,
                   numberAt(file, offset + kBoxNameBytes)};
    if (endOffset - box.offset < box.sizeBytes) return std::nullopt;
    return box;
}

/// Returns: whether a trailer may have this box behind those that it has.
bool isAllowed(const TrailerBox& box, const Trailer& trailer) {
    const bool isNew =
        std::ranges::find(trailer.boxes, box.name, &TrailerBox::name) == trailer.boxes.end();
    return isNew && box.name != kChecksumBox && trailer.boxes.size() + 1 < kMostBoxes;
}

void addBytes(CCrc32& crc, const IPlacedBytes& file, std::uint64_t offset,
              std::uint64_t endOffset) {
    std::vector<unsigned char> piece(std::size_t{1} << 16);
    while (offset < endOffset) {
        const std::uint64_t bytes = std::min<std::uint64_t>(piece.size(), endOffset - offset);
        piece.resize(static_cast<std::size_t>(bytes));
        file.read(offset, piece);
        crc.add(piece.data(), piece.size());
        offset += bytes;
    }
}

}  // namespace

std::optional<std::uint64_t> placeOfTrailer(const IPlacedBytes& file) {
    const std::uint64_t fileBytes = file.sizeBytes();
    if (fileBytes < kShortestTrailerBytes) return std::nullopt;
    const std::uint64_t trailerBytes = numberAt(file, fileBytes - kTrailerEndBytes);
    if (trailerBytes < kShortestTrailerBytes || trailerBytes > fileBytes) return std::nullopt;
    const std::uint64_t place = fileBytes - trailerBytes;
    const bool isTrailer = textAt(file, fileBytes - kTrailerEndMagicBytes, kTrailerEndMagicBytes) ==
                               kTrailerEndMagic &&
                           textAt(file, place, kTrailerMagicBytes) == kTrailerMagic;
    return isTrailer ? std::optional(place) : std::nullopt;
}

std::optional<Trailer> findTrailer(const IPlacedBytes& file, std::uint64_t streamBytes) {
    if (placeOfTrailer(file) != streamBytes) return std::nullopt;
    const std::uint64_t endOffset = file.sizeBytes() - kTrailerEndBytes;
    const auto first = boxAt(file, streamBytes + kTrailerMagicBytes, endOffset);
    if (!first || first->name != kChecksumBox || first->sizeBytes != kChecksumBytes)
        return std::nullopt;
    Trailer trailer{streamBytes, numberAt(file, first->offset), {}};
    std::uint64_t offset = trailer.boxesOffset();
    while (offset < endOffset) {
        auto box = boxAt(file, offset, endOffset);
        if (!box || !isAllowed(*box, trailer)) return std::nullopt;
        offset = box->offset + box->sizeBytes;
        trailer.boxes.push_back(std::move(*box));
    }
    return trailer;
}

std::uint32_t checksumOf(const IPlacedBytes& file, const Trailer& trailer) {
    CCrc32 crc;
    addBytes(crc, file, 0, trailer.streamBytes);
    addBytes(crc, file, trailer.boxesOffset(), file.sizeBytes() - kTrailerEndBytes);
    return crc.value();
}

}  // namespace qmx
