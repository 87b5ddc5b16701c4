#include "coding/syntax/CSectionWalk.h"

#include <algorithm>

namespace qmx {

CSectionWalk::CSectionWalk(CBitReader& in, std::uint64_t dataBits, const SectionBounds& bounds)
    : reader(in), totalBits(dataBits), limits(bounds) {
    if (totalBits < kTopPlaneBits) {
        streamEnd = StreamEnd::cut;
    } else {
        readTop();
    }
    counters.reset(top.value_or(-1));
}

void CSectionWalk::readTop() {
    try {
        top = readTopPlane(reader);
        behindLast = reader.getTotal();
    } catch (int) {
        streamEnd = StreamEnd::cut;
    }
}

bool CSectionWalk::readNext(PlacedSection& section) {
    reader.skip(pendingBits);
    pendingBits = 0;
    PlacedSection found;
    found.firstBit = reader.getTotal();
    const NextSection next =
        readNextSection(reader, found.header, limits, totalBits - found.firstBit);
    if (next == NextSection::foreign) streamEnd = StreamEnd::invalid;
    if (next == NextSection::missing) streamEnd = StreamEnd::cut;
    if (next == NextSection::endMark) {
        streamEnd = StreamEnd::complete;
        behindLast = reader.getTotal();
    }
    if (next != NextSection::present) return false;

    const SectionHeader& header = found.header;
    found.bitPlane = counters.take(header.plane, header.order, header.isRefinement);
    found.payloadBit = reader.getTotal();
    found.storedBits = std::min(header.lengthBits, totalBits - found.payloadBit);
    pendingBits = header.lengthBits;
    behindLast = found.endBit();
    // A section whose payload is not all there is the last one, but it is one.
    if (found.isCut()) streamEnd = StreamEnd::cut;
    section = found;
    return true;
}

bool CSectionWalk::next(PlacedSection& section) {
    if (streamEnd) return false;
    try {
        return readNext(section);
    } catch (int) {
        streamEnd = StreamEnd::cut;
        return false;
    }
}

}  // namespace qmx
