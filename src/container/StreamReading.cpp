#include "container/StreamReading.h"

#include "bitstream/CBitReader.h"
#include "coding/CSectionWalk.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

/// Where a walk over the sections of a stream came to.
struct WalkEnd {
    StreamEnd end;
    /// The bit at which the last header or end mark that it took for one begins.
    std::uint64_t lastBit;
    std::uint64_t position;
};

WalkEnd walk(const TKHeader& header, const WrittenStream& stream) {
    CBitReader reader(stream.bytes, stream.sizeBytes);
    const SectionBounds bounds{header.planes(), levelCount(header.xSize, header.ySize),
                               sampleCountBits(header.xSize, header.ySize)};
    CSectionWalk sections(reader, 8 * std::uint64_t{stream.sizeBytes}, bounds);
    std::uint64_t lastBit = 0;
    PlacedSection section;
    while (sections.next(section))
        lastBit = section.firstBit;
    return {sections.end(), lastBit, sections.position()};
}

}  // namespace

Reading readingOf(const TKHeader& header, const WrittenStream& stream) {
    const WalkEnd found = walk(header, stream);
    if (found.end == StreamEnd::invalid) return Reading::refused;
    const bool isMisread = found.lastBit >= stream.misreadBit ||
                           (found.end == StreamEnd::complete && found.position > stream.misreadBit);
    return isMisread ? Reading::wrong : Reading::right;
}

bool endsAtItsEnd(const TKHeader& header, const WrittenStream& stream, std::uint64_t streamBits) {
    const WalkEnd found = walk(header, stream);
    return found.end == StreamEnd::complete && found.position + kEndPaddingBits == streamBits;
}

}  // namespace qmx
