#pragma once

#include "bitstream/CBitReader.h"
#include "bitstream/CStopRequest.h"
#include "bitstream/Memory.h"
#include "coding/decode/DecoderStreams.h"
#include "coding/syntax/CSectionCounters.h"
#include "coding/syntax/SectionSyntax.h"
#include "image/ImageShape.h"

namespace qmx {

/// The sections of a stream, each with a reader at its first bit: found by read, then decoded once, by
/// decodeRows. Format: docs/format.md, 13.1 Section headers.
template <class T>
class CReceivedSections {
public:
    /// Requires: workMemory outlives this object. Throws: std::bad_alloc.
    CReceivedSections(const ImageShape& imageShape, std::pmr::memory_resource* workMemory);

    /// Reads streams whose length fields were widened as well. Requires: read was not called yet.
    void widenLengths() { countBits += kWideningBits; }
    /// Reads all section headers and passes over the payloads. What was there before is forgotten.
    ///
    ///  - in: stands behind the header of the stream. Its data or file stay as they are until the
    ///    sections are decoded.
    ///  - sectionLimit: most sections to read, as if the stream ended behind them; 0 for all.
    ///  - stop: ends the work.
    ///
    /// Returns: 0 complete; 4 the stream ended early; 16 stopped; 128 invalid section header.
    int read(CBitReader& in, int sectionLimit = 0, const CStopRequest& stop = kNeverStopped);

    const ImageShape& shape() const { return imageSize; }
    int levels() const { return levelsUsed; }
    std::pmr::memory_resource* memory() const { return workMemory; }

    // For the decoder of the rows. Requires: read has returned 0 or 4.

    DecoderStreams<T>& streams() { return *coders; }
    /// Returns: the bit planes that sections to come would carry.
    const CSectionCounters& counters() const { return nextPlanes; }
    /// Returns: the top plane of the stream, -1 for none.
    int topPlane() const { return highestPlane; }

private:
    void begin(int topPlane);
    int readSections(CBitReader& in, int sectionLimit, const CStopRequest& stop);
    void assign(CBitReader& in, const SectionHeader& section);
    void assignSignificance(CBitReader& in, int plane, int order, std::uint64_t lengthBits);
    void assignRefinement(CBitReader& in, int plane, int order, std::uint64_t lengthBits);

    ImageShape imageSize;
    int levelsUsed;
    /// What the widths of length fields follow from.
    int countBits;
    std::pmr::memory_resource* workMemory;
    /// Null before read.
    MemoryObject<DecoderStreams<T>> coders;
    CSectionCounters nextPlanes;
    int highestPlane = -1;
};

extern template class CReceivedSections<short>;
extern template class CReceivedSections<int>;

}  // namespace qmx
