#pragma once

#include <cstdint>

#include "bitstream/CBitWriter.h"
#include "bitstream/CStopRequest.h"
#include "coding/encode/ClosingRuns.h"
#include "coding/encode/CodedFacts.h"
#include "coding/encode/EncoderStreams.h"
#include "coding/encode/FoldKernels.h"
#include "image/ImageShape.h"

namespace qmx {

/// The coded sections of one image: filled by encodeRows, perhaps changed where they would not bring
/// the image back, then written best-first, as often as needed.
/// Format: docs/format.md, 10 Sections and 12 Section order.
template <class T>
class CCodedSections {
public:
    /// Requires: workMemory outlives this object. Throws: std::bad_alloc.
    CCodedSections(const ImageShape& imageShape, std::pmr::memory_resource* workMemory);

    const ImageShape& shape() const { return imageSize; }
    int levels() const { return coded.levels; }
    std::pmr::memory_resource* memory() const { return workMemory; }

    // For the encoder of the rows.

    EncoderStreams<T>& streams() { return *coders; }
    /// Returns: where the folded values of the coarsest order go, in scan order.
    std::pmr::vector<T>& coarsestOf(int plane) { return coarsest[plane]; }
    /// Closes all sections. Requires: found is what folding found out in all coefficients.
    /// Throws: std::bad_alloc.
    void close(const FoldedUnion<T>& found);

    // Requires of all that follows: the sections are closed.

    const CodedFacts& facts() const { return coded; }
    /// Returns: the highest bit plane that the stream sends.
    int topPlane() const { return highestPlane; }
    /// Returns: the size that lazy writers are told, a little too much. It decides where they cut.
    std::uint64_t estimateBytes() const;
    /// Writes the complete stream. Each call writes the same stream, up to a section behind which stop is
    /// set. Throws: what out throws, which is how a budget ends a stream.
    void writeStream(CBitWriter& out, const CStopRequest& stop = kNeverStopped);
    /// The same. Returns: whether all of it was written.
    bool writeWhatFits(CBitWriter& out, const CStopRequest& stop = kNeverStopped);
    /// Widens length fields so that no section is too long. Such a stream is read by sections that were
    /// widened as well, and by no decoder.
    void widenLengths();

    // Other ways to code the coarsest order of a colour plane. The stream then differs, decoders and
    // their image do not.

    /// Returns: the bits that an n section of the coarsest order may have.
    std::uint64_t longestCoarsestBits() const;
    /// Returns: the folded values of the coarsest order, in scan order. Throws: std::bad_alloc.
    FoldedValues coarsestValues(int plane) const;
    /// Codes other values in their place. Requires: as many, with magnitudes of up to
    /// kTableBitPlanes<T> bits. Throws: std::bad_alloc.
    void recodeCoarsest(int plane, const FoldedValues& values, ClosingRuns closing);
    /// How the sections of the coarsest order are closed that would be too long otherwise. Requires: the
    /// sections are not closed yet.
    void setClosingRuns(int plane, ClosingRuns closing) { closingRuns[plane] = closing; }
    /// Spells out the runs of sections without new coefficients that cover more than longestRun.
    /// Throws: std::bad_alloc.
    void sendEndlessRuns(std::uint64_t longestRun = kEndRun + 1);

private:
    void closeAndMeasure();
    void closeAndMeasure(int plane, int order, int bitPlane);
    void closeSection(OrderSections& sections, int plane, int order, int bitPlane);
    void writeSection(CBitWriter& out, int plane, int order, bool isRefinement, int bitPlane);
    bool needsZerosBehind(int plane, int order, bool isRefinement, int bitPlane) const;

    ImageShape imageSize;
    std::pmr::memory_resource* workMemory;
    MemoryObject<EncoderStreams<T>> coders;
    std::pmr::vector<T> coarsest[kTablePlanes];
    ClosingRuns closingRuns[kTablePlanes]{};
    /// The bit planes of the coarsest order whose last run is read from the section behind them.
    std::uint32_t openPlanes[kTablePlanes]{};
    CodedFacts coded;
    /// What the widths of length fields follow from.
    int countBits;
    int highestPlane = 0;
    std::uint64_t estimateBits = 0;
};

extern template class CCodedSections<short>;
extern template class CCodedSections<int>;

}  // namespace qmx
