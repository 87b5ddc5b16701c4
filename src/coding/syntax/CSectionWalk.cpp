#include "coding/syntax/CSectionWalk.h"

#include <algorithm>

namespace qmx {

CSectionWalk::CSectionWalk(CBitReader& in, std::uint64_t dataBits, const SectionBounds& bounds)
    : reader(in), totalBits(dataBits), limits(bounds) {
    try {
        top = readTopPlane(reader);
        behindLast = reader.getTotal();
    } catch (int) {
        streamEnd = StreamEnd::cut;
    }
    counters.reset(top.value_or(-1));
}

bool CSectionWalk::readNext(PlacedSection& section) {
    // A section whose payload cannot be skipped is the last one, but it is one.
    reader.skip(pendingBits);
    pendingBits = 0;
    PlacedSection found;
    found.firstBit = reader.getTotal();
    const NextSection next = readNextSection(reader, found.header, limits);
    if (next == NextSection::foreign) streamEnd = StreamEnd::invalid;
    if (next == NextSection::endMark) {
        streamEnd = StreamEnd::complete;
        behindLast = reader.getTotal();
    }
    if (next != NextSection::present) return false;

    const SectionHeader& header = found.header;
    found.bitPlane = counters.take(header.plane, header.order, header.isRefinement);
    found.payloadBit = reader.getTotal();
    found.storedBits =
        std::min(header.lengthBits, totalBits - std::min(totalBits, found.payloadBit));
    pendingBits = header.lengthBits;
    behindLast = found.endBit();
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
