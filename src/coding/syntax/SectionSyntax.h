#pragma once

#include <cstdint>

#include "bitstream/CBitReader.h"
#include "bitstream/CBitWriter.h"

namespace qmx {

// Format: docs/format.md, 9 Stream and 10 Sections.

/// The fields in front of a section's payload.
struct SectionHeader {
    int plane;
    int order;
    bool isRefinement;
    std::uint64_t lengthBits;
};

/// Width of the field in front of all sections.
inline constexpr int kTopPlaneBits = 8;
/// Width of the fields plane, order and type together.
inline constexpr int kSectionTagBits = 6;
/// Width of the end mark, which stands in the place of the plane field.
inline constexpr int kEndMarkBits = 2;
/// Zero bits behind the end mark, which nobody reads.
inline constexpr int kEndPaddingBits = 9;

/// Returns: the width of the length field of a section. Requires: sampleCountBits, the number of
/// bits of width x height. May be negative for an order that a damaged stream names.
constexpr int lengthFieldBits(int sampleCountBits, int order) {
    return sampleCountBits + 1 - 2 * order;
}

/// Returns: the most bits that a section can say it has. Requires: as above, and an order of the image.
constexpr std::uint64_t longestSectionBits(int sampleCountBits, int order) {
    return lowBits(lengthFieldBits(sampleCountBits, order));
}

/// Added to the number of bits of width x height, it makes length fields so wide that no section exceeds
/// them: it holds 2^8 bits and more for each coefficient of its order, of which a run code of 0
/// and a sign, or any longer run for those that it covers, take a few. Only streams that an encoder writes for itself have such fields.
inline constexpr int kWideningBits = 8;

/// Returns: the number of bits of width x height.
int sampleCountBits(int width, int height);

/// Appends the top plane. Throws: what out throws.
void writeTopPlane(CBitWriter& out, int topPlane);
/// Returns: the top plane, -1 when the stream has no bit planes. Throws: what in throws.
int readTopPlane(CBitReader& in);

/// Appends a header. Of a length that is too long for its field, the low bits are written (Quirk 11).
/// Throws: what out throws.
void writeSectionHeader(CBitWriter& out, const SectionHeader& header, int countBits);
/// Reads a header. Returns: false at the end mark, with nothing but the mark consumed.
/// Throws: what in throws.
bool readSectionHeader(CBitReader& in, SectionHeader& header, int countBits);

/// What the header of a section is checked against.
struct SectionBounds {
    int planes;
    /// Level count of the image; orders run from 0 to it.
    int levels;
    /// Number of bits of width x height.
    int countBits;
};

/// What stands in a stream where a section may begin; foreign: one that the image cannot have; missing: less
/// than the header of one.
enum class NextSection { present, endMark, foreign, missing };

/// For data of unknown length, whose reader throws at their end.
inline constexpr std::uint64_t kUnknownBits = ~std::uint64_t{0};

/// Reads a header as all decoders do, and no more than leftBits bits. Returns: what it is; header is set when
/// it is present or foreign. Throws: what in throws where it has fewer bits than leftBits.
NextSection readNextSection(CBitReader& in, SectionHeader& header, const SectionBounds& bounds,
                            std::uint64_t leftBits = kUnknownBits);

/// Appends the end mark. Throws: what out throws.
void writeEndMark(CBitWriter& out);

}  // namespace qmx
