#include "container/NarrowSamples.h"

#include "bitstream/CBitReader.h"
#include "coding/syntax/SectionSyntax.h"

namespace qmx {

bool mayBeNarrow(const TKHeader& header, const unsigned char* stream, std::size_t sizeBytes) {
    constexpr int kHighestNarrowPlane = 12;
    if (!hasWideCoefficients(header) || sizeBytes == 0) return false;
    CBitReader reader(stream, sizeBytes);
    return readTopPlane(reader) <= kHighestNarrowPlane;
}

}  // namespace qmx
