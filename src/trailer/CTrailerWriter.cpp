#include "trailer/CTrailerWriter.h"

#include <cassert>
#include <limits>
#include <stdexcept>

#include "bitstream/CReflectedCrc.h"
#include "bitstream/WordBytes.h"
#include "trailer/Trailer.h"

namespace qmx {
namespace {

using Bytes = std::vector<unsigned char>;

constexpr std::uint64_t kMostTrailerBytes = std::numeric_limits<std::uint32_t>::max();

void addText(Bytes& bytes, std::string_view text) {
    bytes.insert(bytes.end(), text.begin(), text.end());
}

void addNumber(Bytes& bytes, std::uint32_t number) {
    unsigned char stored[4];
    storeNumber(stored, number);
    bytes.insert(bytes.end(), stored, stored + sizeof stored);
}

}  // namespace

void CTrailerWriter::add(std::string_view name, std::span<const unsigned char> bytes) {
    assert(name.size() == kBoxNameBytes && name != kChecksumBox);
    const std::uint64_t before = kShortestTrailerBytes + boxes.size() + kBoxHeaderBytes;
    if (before > kMostTrailerBytes || bytes.size() > kMostTrailerBytes - before)
        throw std::length_error("the boxes of a trailer take 4 GiB or more");
    boxes.reserve(boxes.size() + kBoxHeaderBytes + bytes.size());
    addText(boxes, name);
    addNumber(boxes, static_cast<std::uint32_t>(bytes.size()));
    boxes.insert(boxes.end(), bytes.begin(), bytes.end());
}

std::vector<unsigned char> CTrailerWriter::finish(std::span<const unsigned char> stream) const {
    CCrc32 crc;
    crc.add(stream.data(), stream.size());
    crc.add(boxes.data(), boxes.size());
    Bytes trailer;
    trailer.reserve(kShortestTrailerBytes + boxes.size());
    addText(trailer, kTrailerMagic);
    addText(trailer, kChecksumBox);
    addNumber(trailer, kChecksumBytes);
    addNumber(trailer, crc.value());
    trailer.insert(trailer.end(), boxes.begin(), boxes.end());
    addNumber(trailer, static_cast<std::uint32_t>(kShortestTrailerBytes + boxes.size()));
    addText(trailer, kTrailerEndMagic);
    return trailer;
}

}  // namespace qmx
