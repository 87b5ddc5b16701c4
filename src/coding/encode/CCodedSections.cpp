#include "coding/encode/CCodedSections.h"

#include <algorithm>

#include "coding/encode/CNearestRounding.h"
#include "coding/encode/COrderEncoder.h"
#include "coding/encode/CSectionChooser.h"
#include "coding/encode/SectionLengths.h"
#include "coding/syntax/FoldedValue.h"
#include "coding/syntax/SectionSyntax.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

/// Stream bits outside the sections: top plane and end mark.
constexpr std::uint64_t kFixedBits = 19;
/// What the size estimate counts for the headers of the n and the u section of a bit plane, beside their
/// lengths: more than the 2 * kSectionTagBits that they take. Lazy writers cut where the estimate ends, so
/// that another number would be another stream.
constexpr std::uint64_t kEstimatedTagBits = 22;

}  // namespace

template <class T>
CCodedSections<T>::CCodedSections(const ImageShape& imageShape, std::pmr::memory_resource* memory)
    : imageSize(imageShape),
      workMemory(memory),
      coders(makeObject<EncoderStreams<T>>(memory, imageSize.planes,
                                           levelCount(imageSize.width, imageSize.height),
                                           imageSize.samplesPerPlane(), memory)),
      coarsest{std::pmr::vector<T>(memory), std::pmr::vector<T>(memory),
               std::pmr::vector<T>(memory)},
      countBits(sampleCountBits(imageSize.width, imageSize.height)) {
    coded.levels = levelCount(imageSize.width, imageSize.height);
}

template <class T>
void CCodedSections<T>::close(const FoldedUnion<T>& found) {
    highestPlane = topPlaneOf(found.bits);
    coded.lostCoefficients = found.lost;
    coders->releaseQueues();
    closeAndMeasure();
}

template <class T>
void CCodedSections<T>::closeAndMeasure() {
    estimateBits = coded.streamBits = kFixedBits;
    coded.overlongSections = coded.endlessSections = 0;
    for (int p = 0; p < imageSize.planes; ++p)
        for (int o = 0; o <= levels(); ++o)
            for (int b = 0; b <= highestPlane; ++b)
                closeAndMeasure(p, o, b);
}

template <class T>
void CCodedSections<T>::closeAndMeasure(int plane, int order, int bitPlane) {
    const auto lengthBits = static_cast<std::uint64_t>(lengthFieldBits(countBits, order));
    // The top plane has no u section.
    const std::uint64_t headers = bitPlane < highestPlane ? 2 : 1;
    estimateBits += 2 * lengthBits + kEstimatedTagBits;
    coded.streamBits += headers * (kSectionTagBits + lengthBits);

    if (bitPlane >= kTableBitPlanes<T>) return;
    OrderSections& orderSections = coders->of(plane, order);
    closeSection(orderSections, plane, order, bitPlane);
    const PlaneSections& sections = orderSections.bitPlanes[bitPlane];
    const std::uint64_t significanceBits = sections.significanceBits();
    const std::uint64_t refinementBits = sections.refinementBits();
    estimateBits += significanceBits + refinementBits;
    coded.streamBits += significanceBits + refinementBits;

    const std::uint64_t longest = longestSectionBits(countBits, order);
    coded.overlongSections += static_cast<unsigned>(significanceBits > longest);
    coded.overlongSections += static_cast<unsigned>(refinementBits > longest);
    const bool isEndless =
        significanceBits == 0 && sections.covered(orderSections.position) > kEndRun + 1;
    coded.endlessSections += static_cast<unsigned>(isEndless);
}

template <class T>
void CCodedSections<T>::closeSection(OrderSections& sections, int plane, int order, int bitPlane) {
    if (sections.isClosed(bitPlane)) return;
    const PlaneSections& section = sections.bitPlanes[bitPlane];
    const std::uint64_t run = section.run(sections.position);
    const std::uint64_t openBits = section.significanceBits();
    const bool fits = openBits == 0 || order != levels() ||
                      openBits + runCodeBits(run, kRunParameter) <= longestCoarsestBits();
    if (fits || !leavesOut(closingRuns[plane], run)) return sections.close(bitPlane);
    if (run != 0) openPlanes[plane] |= 1U << bitPlane;
    sections.leaveOpen(bitPlane);
}

template <class T>
std::uint64_t CCodedSections<T>::estimateBytes() const {
    return (estimateBits + estimateBits / 20 + 7) >> 3;
}

template <class T>
void CCodedSections<T>::writeSection(CBitWriter& out, int plane, int order, bool isRefinement,
                                     int bitPlane) {
    // Bit planes outside the tables are sent as empty sections.
    const PlaneSections* const sections =
        bitPlane < kTableBitPlanes<T> ? coders->of(plane, order).bitPlanes + bitPlane : nullptr;
    std::uint64_t lengthBits = 0;
    if (sections != nullptr)
        lengthBits = isRefinement ? sections->refinementBits() : sections->significanceBits();
    writeSectionHeader(out, {plane, order, isRefinement, lengthBits}, countBits);
    const std::uint64_t longest = longestSectionBits(countBits, order);
    if (lengthBits > longest) {
        // Quirk 1: a writer without room counts up to the largest number, and holds nothing to misread.
        const std::uint64_t payloadBit = out.getTotal();
        if (payloadBit < CodedFacts::kNeverMisread - longest)
            coded.misreadBit = std::min(coded.misreadBit, payloadBit + (lengthBits & longest));
    }
    if (lengthBits == 0) return;
    if (isRefinement)
        sections->refinementChunks.writeTo(out, sections->refinement);
    else
        sections->significanceChunks.writeTo(out, sections->significance);
}

/// An open run is read from the bits behind its section. It is not 0, so its code begins with zeros, as
/// the header of a section of plane 0 and order 0 does.
template <class T>
bool CCodedSections<T>::needsZerosBehind(int plane, int order, bool isRefinement,
                                         int bitPlane) const {
    const bool isOpen = bitPlane < kMagnitudeBits && ((openPlanes[plane] >> bitPlane) & 1) != 0;
    return isOpen && order == levels() && !isRefinement;
}

template <class T>
void CCodedSections<T>::writeStream(CBitWriter& out, const CStopRequest& stop) {
    const CNearestRounding rounding;
    coded.misreadBit = CodedFacts::kNeverMisread;
    CSectionChooser<T> chooser(*coders, imageSize.planes, levels(), highestPlane);
    writeTopPlane(out, highestPlane);
    auto choice = chooser.choose(imageSize.planes, levels());
    while (choice && !stop.isSet()) {
        const auto [plane, order, isRefinement] = *choice;
        const int bitPlane = chooser.take(*choice);
        writeSection(out, plane, order, isRefinement, bitPlane);
        choice.reset();
        if (needsZerosBehind(plane, order, isRefinement, bitPlane)) choice = chooser.choose(1, 0);
        if (!choice) choice = chooser.choose(imageSize.planes, levels());
    }
    writeEndMark(out);
    out.flush();
}

template <class T>
bool CCodedSections<T>::writeWhatFits(CBitWriter& out, const CStopRequest& stop) {
    try {
        writeStream(out, stop);
    } catch (int) {
        return false;
    }
    return true;
}

template <class T>
void CCodedSections<T>::widenLengths() {
    countBits += kWideningBits;
    closeAndMeasure();
}

template <class T>
std::uint64_t CCodedSections<T>::longestCoarsestBits() const {
    return longestSectionBits(countBits, levels());
}

template <class T>
FoldedValues CCodedSections<T>::coarsestValues(int plane) const {
    FoldedValues values(workMemory);
    for (const T folded : coarsest[plane])
        values.push_back(static_cast<std::uint64_t>(folded));
    return values;
}

template <class T>
void CCodedSections<T>::recodeCoarsest(int plane, const FoldedValues& values, ClosingRuns closing) {
    const std::uint64_t most = *std::max_element(values.begin(), values.end());
    // Nothing is new in the planes that come on top, so their sections are empty.
    highestPlane = std::max(highestPlane, bitLength(most >> 1) - 1);
    coders->restart(plane, levels());
    // Not on the stack, of which it would take more than all else.
    const auto encoder = makeObject<COrderEncoder<T>>(workMemory, *coders, plane, levels());
    for (const std::uint64_t folded : values)
        encoder->encode(folded);
    encoder->finish();
    closingRuns[plane] = closing;
    openPlanes[plane] = 0;
    closeAndMeasure();
}

template <class T>
void CCodedSections<T>::sendEndlessRuns(std::uint64_t longestRun) {
    const int tablePlanes = std::min(highestPlane + 1, kTableBitPlanes<T>);
    for (int p = 0; p < imageSize.planes; ++p)
        for (int o = 0; o <= levels(); ++o)
            for (int b = 0; b < tablePlanes; ++b) {
                OrderSections& sections = coders->of(p, o);
                const PlaneSections& section = sections.bitPlanes[b];
                const bool isTooLong = section.covered(sections.position) > longestRun;
                if (section.significanceBits() == 0 && isTooLong) sections.appendWholeRun(b);
            }
    closeAndMeasure();
}

template class CCodedSections<short>;
template class CCodedSections<int>;

}  // namespace qmx
