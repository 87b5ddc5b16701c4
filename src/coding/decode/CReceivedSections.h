#pragma once

#include <optional>

#include "bitstream/CBitReader.h"
#include "bitstream/CStopRequest.h"
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
    /// Of an image of this shape, or of its reduced picture at 1 : 2^reduction: that has the orders from
    /// `reduction` up, which count from 0 here. Sections of finer orders are passed over.
    /// Requires: reduction is at most the levels of the image, or 0; workMemory outlives this object.
    /// Throws: std::bad_alloc. Format: docs/format.md, 17 Reduced pictures.
    CReceivedSections(const ImageShape& imageShape, std::pmr::memory_resource* workMemory,
                      int reduction = 0);

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

    /// Of the picture that the sections make.
    ImageShape shape() const { return imageSize.reducedBy(reducedLevels); }
    int levels() const { return imageLevels - reducedLevels; }
    /// The picture is 1 : 2^reduction of such an image.
    const ImageShape& imageShape() const { return imageSize; }
    int reduction() const { return reducedLevels; }
    std::pmr::memory_resource* memory() const { return workMemory; }

    // For the decoder of the rows. Requires: read has returned 0 or 4.

    DecoderStreams& streams() { return *coders; }
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
    int imageLevels;
    int reducedLevels;
    /// What the widths of length fields follow from.
    int countBits;
    std::pmr::memory_resource* workMemory;
    /// Nothing before read.
    std::optional<DecoderStreams> coders;
    CSectionCounters nextPlanes;
    int highestPlane = -1;
};

extern template class CReceivedSections<short>;
extern template class CReceivedSections<int>;

}  // namespace qmx
