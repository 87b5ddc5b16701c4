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

    auto* encoder = coders->encoders.find(plane, order, bitPlane);
    if (encoder == nullptr) return;
    closeSection(*encoder, plane, order, bitPlane);
    const std::uint64_t significanceBits = encoder->getStoredTotal();
    const std::uint64_t refinementBits =
        coders->refinements.find(plane, order, bitPlane)->getTotal();
    estimateBits += significanceBits + refinementBits;
    coded.streamBits += significanceBits + refinementBits;

    const std::uint64_t longest = longestSectionBits(countBits, order);
    coded.overlongSections += static_cast<unsigned>(significanceBits > longest);
    coded.overlongSections += static_cast<unsigned>(refinementBits > longest);
    const bool isEndless = significanceBits == 0 && encoder->getTotal() > kEndRun + 1;
    coded.endlessSections += static_cast<unsigned>(isEndless);
}

template <class T>
void CCodedSections<T>::closeSection(CBitChunkEncoder& encoder, int plane, int order,
                                     int bitPlane) {
    const std::uint64_t openBits = encoder.getStoredTotal();
    const std::uint64_t closedBits = openBits + runCodeBits(encoder.getRun(), kRunParameter);
    const bool fits = openBits == 0 || order != levels() || closedBits <= longestCoarsestBits();
    if (fits || encoder.isTerminated() || !leavesOut(closingRuns[plane], encoder.getRun()))
        return encoder.terminate();
    if (encoder.getRun() != 0) openPlanes[plane] |= 1U << bitPlane;
    encoder.leaveOpen();
}

template <class T>
std::uint64_t CCodedSections<T>::estimateBytes() const {
    return (estimateBits + estimateBits / 20 + 7) >> 3;
}

template <class T>
void CCodedSections<T>::writeSection(CBitWriter& out, int plane, int order, bool isRefinement,
                                     int bitPlane) {
    CBitChunkWriter* writer = nullptr;
    if (isRefinement) {
        writer = coders->refinements.find(plane, order, bitPlane);
    } else if (auto* encoder = coders->encoders.find(plane, order, bitPlane)) {
        writer = &encoder->writer();
    }
    // Bit planes outside the tables are sent as empty sections.
    const std::uint64_t lengthBits = writer == nullptr ? 0 : writer->getTotal();
    writeSectionHeader(out, {plane, order, isRefinement, lengthBits}, countBits);
    const std::uint64_t longest = longestSectionBits(countBits, order);
    // Quirk 1: a writer without room counts up to the largest number, and holds nothing to misread.
    const std::uint64_t payloadBit = out.getTotal();
    if (lengthBits > longest && payloadBit < CodedFacts::kNeverMisread - longest)
        coded.misreadBit = std::min(coded.misreadBit, payloadBit + (lengthBits & longest));
    if (writer != nullptr) writer->writeBitsTo(&out, 0);
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
    raiseTopPlane(bitLength(most >> 1) - 1);
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
void CCodedSections<T>::raiseTopPlane(int topPlane) {
    // Nothing is new in the planes that come on top, so their sections are empty.
    const int highest = std::min(topPlane, kTableBitPlanes<T> - 1);
    for (int c = 0; c < imageSize.planes; ++c)
        for (int o = 0; o <= levels(); ++o)
            for (int p = highestPlane + 1; p <= highest; ++p)
                coders->encoders.find(c, o, p)->setRun(
                    coders->encoders.find(c, o, highestPlane)->getTotal());
    highestPlane = std::max(highestPlane, topPlane);
}

template <class T>
void CCodedSections<T>::sendEndlessRuns(std::uint64_t longestRun) {
    coders->encoders.forEach([=](CBitChunkEncoder& encoder) {
        if (encoder.getStoredTotal() == 0 && encoder.getTotal() > longestRun)
            encoder.sendFinalZeros();
    });
    closeAndMeasure();
}

template class CCodedSections<short>;
template class CCodedSections<int>;

}  // namespace qmx
