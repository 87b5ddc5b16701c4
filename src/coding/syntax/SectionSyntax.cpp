#include "coding/syntax/SectionSyntax.h"

namespace qmx {
namespace {

constexpr std::uint64_t kNoTopPlane = 255;
constexpr int kPlaneBits = kEndMarkBits;
constexpr int kOrderBits = 3;
constexpr int kTypeBits = 1;
static_assert(kPlaneBits + kOrderBits + kTypeBits == kSectionTagBits);
/// In the plane field: no section follows.
constexpr std::uint64_t kEndMark = 3;

NextSection readHeader(CBitReader& in, SectionHeader& header, int countBits,
                       std::uint64_t leftBits) {
    if (leftBits < kPlaneBits) return NextSection::missing;
    const std::uint64_t plane = in.readInt(kPlaneBits);
    if (plane == kEndMark) return NextSection::endMark;
    if (leftBits < kSectionTagBits) return NextSection::missing;
    header.plane = static_cast<int>(plane);
    const std::uint64_t rest = in.readInt(kOrderBits + kTypeBits);
    header.order = static_cast<int>(rest & lowBits(kOrderBits));
    header.isRefinement = rest >> kOrderBits != 0;
    // The width may be negative; it counts modulo 64, and the order is refused later.
    const int width = lengthFieldBits(countBits, header.order) & (kWordBits - 1);
    const int headerBits = kSectionTagBits + width;
    if (leftBits < static_cast<std::uint64_t>(headerBits)) return NextSection::missing;
    header.lengthBits = in.readInt(width);
    return NextSection::present;
}

}  // namespace

int sampleCountBits(int width, int height) {
    return bitLength(static_cast<std::uint64_t>(std::int64_t{width} * height));
}

void writeTopPlane(CBitWriter& out, int topPlane) {
    out.writeInt(static_cast<std::uint64_t>(topPlane), kTopPlaneBits);
}

int readTopPlane(CBitReader& in) {
    const std::uint64_t topPlane = in.readInt(kTopPlaneBits);
    return topPlane == kNoTopPlane ? -1 : static_cast<int>(topPlane);
}

void writeSectionHeader(CBitWriter& out, const SectionHeader& header, int countBits) {
    const std::uint64_t tag = static_cast<std::uint64_t>(header.plane) |
                              static_cast<std::uint64_t>(header.order) << kPlaneBits |
                              static_cast<std::uint64_t>(header.isRefinement)
                                  << (kPlaneBits + kOrderBits);
    out.writeInt(tag | header.lengthBits << kSectionTagBits,
                 kSectionTagBits + lengthFieldBits(countBits, header.order));
}

bool readSectionHeader(CBitReader& in, SectionHeader& header, int countBits) {
    return readHeader(in, header, countBits, kUnknownBits) == NextSection::present;
}

NextSection readNextSection(CBitReader& in, SectionHeader& header, const SectionBounds& bounds,
                            std::uint64_t leftBits) {
    const NextSection next = readHeader(in, header, bounds.countBits, leftBits);
    if (next != NextSection::present) return next;
    const bool isForeign = header.plane >= bounds.planes || header.order > bounds.levels;
    return isForeign ? NextSection::foreign : NextSection::present;
}

void writeEndMark(CBitWriter& out) {
    out.writeInt(kEndMark, kPlaneBits);
    out.writeInt(0, kEndPaddingBits);
}

}  // namespace qmx
