#include "container/StreamReading.h"

#include "bitstream/CBitReader.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

WalkEnd walkSections(const TKHeader& header, const WrittenStream& stream) {
    CBitReader reader(stream.bytes, stream.sizeBytes);
    const SectionBounds bounds{header.planes(), levelCount(header.xSize, header.ySize),
                               sampleCountBits(header.xSize, header.ySize)};
    CSectionWalk sections(reader, 8 * std::uint64_t{stream.sizeBytes}, bounds);
    std::optional<std::uint64_t> lastSection;
    PlacedSection section;
    while (sections.next(section))
        lastSection = section.firstBit;
    return {sections.end(), lastSection, sections.position()};
}

Reading readingOf(const TKHeader& header, const WrittenStream& stream) {
    const WalkEnd found = walkSections(header, stream);
    if (found.end == StreamEnd::invalid) return Reading::refused;
    const bool isComplete = found.end == StreamEnd::complete;
    const bool isMisread = (found.lastSection && *found.lastSection >= stream.misreadBit) ||
                           (isComplete && found.position > stream.misreadBit);
    if (isMisread) return Reading::wrong;
    return isComplete ? Reading::whole : Reading::part;
}

bool endsAtItsEnd(const TKHeader& header, const WrittenStream& stream, std::uint64_t streamBits) {
    const WalkEnd found = walkSections(header, stream);
    return found.end == StreamEnd::complete && found.position + kEndPaddingBits == streamBits;
}

}  // namespace qmx
