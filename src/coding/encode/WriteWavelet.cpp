// The coefficient encoder: writeWavelet of CWaveletEncoder and its stages.

#include <algorithm>
#include <optional>

#include "bitstream/Status.h"
#include "coding/encode/CNearestRounding.h"
#include "coding/encode/CWaveletEncoder.h"
#include "coding/encode/PlaneEncoder.h"
#include "coding/encode/SectionLengths.h"
#include "coding/encode/SectionPriority.h"
#include "coding/syntax/FoldedValue.h"
#include "coding/syntax/SectionCounters.h"
#include "coding/syntax/SectionSyntax.h"

namespace qmx {
namespace {

/// Stream bits outside the sections: top plane and end mark.
constexpr std::uint64_t kFixedBits = 19;
/// Bits of the two section headers of a bit plane in the size estimate, without their lengths. More
/// than they take; the estimate decides where lazy writers cut, so it is kept.
constexpr std::uint64_t kHeaderPairBits = 22;

struct SectionChoice {
    int plane;
    int order;
    bool refinement;
};

/// Finds the section that is worth most for its bits among those that may come next.
template <class T>
class SectionChooser {
public:
    SectionChooser(EncoderStreams<T>& coderStreams, const SectionCounters& sectionCounters)
        : streams(coderStreams), counters(sectionCounters) {}

    /// Returns: the choice, or nothing when all sections have been sent. On a tie the earlier
    /// plane, the lower order and the n section win.
    std::optional<SectionChoice> choose(int planes, int levels) {
        best = -1.0;
        for (int p = 0; p < planes; ++p)
            for (int o = 0; o <= levels; ++o)
                consider(p, o);
        if (best <= 0.0) return std::nullopt;
        return choice;
    }

private:
    void consider(int p, int o) {
        const auto n = static_cast<int>(counters.significance(p, o));
        const auto u = static_cast<int>(counters.refinement(p, o));
        if (n >= 0) offer(significance(p, o, n), {p, o, false});
        // A u section refines coefficients that an n section above it has announced.
        if (u >= std::max(n, 0)) offer(refinementValue(p, o, u), {p, o, true});
    }

    double significance(int p, int o, int bitPlane) {
        const auto* coder = streams.encoders.find(p, o, bitPlane);
        const auto* newCount = streams.newCounts.find(p, o, bitPlane);
        // A section without new coefficients is as good as empty, even if its run was spelled out.
        if (coder == nullptr || *newCount == 0) return significanceValue(p, o, bitPlane, 0, 0);
        return significanceValue(p, o, bitPlane, *newCount, coder->getStoredTotal());
    }

    void offer(double value, const SectionChoice& candidate) {
        if (value <= best) return;
        best = value;
        choice = candidate;
    }

    EncoderStreams<T>& streams;
    const SectionCounters& counters;
    double best = -1.0;
    SectionChoice choice{};
};

}  // namespace

template <class T>
int CWaveletEncoder<T>::sampleCountBits() const {
    return qmx::sampleCountBits(this->image->x, this->image->y);
}

/// Returns: false when it was cancelled; the planes must not be coded then.
template <class T>
bool CWaveletEncoder<T>::foldPlanes() {
    const auto& kernels = foldKernels<T>(activeCpuLevel());
    const auto width = static_cast<std::size_t>(this->image->x);
    FoldedUnion<T> all;
    for (int p = 0; p < this->image->planes; ++p)
        for (int r = 0; r < this->image->y; ++r) {
            if (this->isCancelled()) return false;
            kernels.fold(this->image->row(p, r), width, this->image->row(p, r), all);
        }
    this->bits = topPlaneOf(all.bits);
    lostCoefficients = all.lost;
    return true;
}

template <class T>
bool CWaveletEncoder<T>::encodeRows(int arg) {
    MemoryObject<PlaneEncoder<T>> encoder;
    int encodedPlane = -1;
    const bool suspended = this->scanRows(arg, [&](int p, int r) {
        if (p != encodedPlane) {
            if (encoder != nullptr) encoder->finish();
            encoder.reset();
            encoder = makeObject<PlaneEncoder<T>>(memory, *streams, p, this->levels, this->bits);
            encodedPlane = p;
        }
        encoder->encodeRow(this->image->row(p, r), r, this->image->x);
    });
    if (encoder != nullptr) encoder->finish();
    return suspended;
}

template <class T>
void CWaveletEncoder<T>::closeCoders() {
    estimateBits = streamBits = kFixedBits;
    overlongSections = endlessSections = 0;
    for (int p = 0; p < this->image->planes; ++p)
        for (int o = 0; o <= this->levels; ++o)
            for (int b = 0; b <= this->bits; ++b)
                closeAndMeasure(p, o, b);
}

template <class T>
void CWaveletEncoder<T>::closeAndMeasure(int plane, int order, int bitPlane) {
    const auto lengthBits = static_cast<std::uint64_t>(lengthFieldBits(sampleCountBits(), order));
    // The top plane has no u section.
    const std::uint64_t headers = bitPlane < this->bits ? 2 : 1;
    estimateBits += 2 * lengthBits + kHeaderPairBits;
    streamBits += headers * (kSectionTagBits + lengthBits);

    auto* encoder = streams->encoders.find(plane, order, bitPlane);
    if (encoder == nullptr) return;
    closeSection(*encoder, plane, order, bitPlane);
    const std::uint64_t significanceBits = encoder->getStoredTotal();
    const std::uint64_t refinementBits =
        streams->refinements.find(plane, order, bitPlane)->getTotal();
    estimateBits += significanceBits + refinementBits;
    streamBits += significanceBits + refinementBits;

    const std::uint64_t longest = longestSectionBits(sampleCountBits(), order);
    overlongSections += static_cast<unsigned>(significanceBits > longest);
    overlongSections += static_cast<unsigned>(refinementBits > longest);
    const bool isEndless = significanceBits == 0 && encoder->getTotal() > kEndRun + 1;
    endlessSections += static_cast<unsigned>(isEndless);
}

template <class T>
void CWaveletEncoder<T>::closeSection(CBitChunkEncoder& encoder, int plane, int order,
                                      int bitPlane) {
    const std::uint64_t openBits = encoder.getStoredTotal();
    const std::uint64_t closedBits = openBits + runCodeBits(encoder.getRun(), kRunParameter);
    const bool fits =
        openBits == 0 || order != this->levels || closedBits <= getLongestSectionBits();
    if (fits || encoder.isTerminated() || !leavesOut(closingRuns[plane], encoder.getRun()))
        return encoder.terminate();
    if (encoder.getRun() != 0) openPlanes[plane] |= 1U << bitPlane;
    encoder.leaveOpen();
}

template <class T>
void CWaveletEncoder<T>::writeSection(CBitWriter& out, int plane, int order, bool refinement,
                                      int bitPlane) {
    CBitChunkWriter* writer = nullptr;
    if (refinement) {
        writer = streams->refinements.find(plane, order, bitPlane);
    } else if (auto* encoder = streams->encoders.find(plane, order, bitPlane)) {
        writer = &encoder->writer();
    }
    // Bit planes outside the tables are sent as empty sections.
    const std::uint64_t lengthBits = writer == nullptr ? 0 : writer->getTotal();
    writeSectionHeader(out, {plane, order, refinement, lengthBits}, sampleCountBits());
    const std::uint64_t longest = longestSectionBits(sampleCountBits(), order);
    // Quirk 1: a writer without room counts up to the largest number, and holds nothing to misread.
    const std::uint64_t payloadBit = out.getTotal();
    if (lengthBits > longest && payloadBit < kNeverMisread - longest)
        misreadBit = std::min(misreadBit, payloadBit + (lengthBits & longest));
    if (writer != nullptr) writer->writeBitsTo(&out, 0);
}

template <class T>
bool CWaveletEncoder<T>::needsZerosBehind(int plane, int order, bool refinement,
                                          int bitPlane) const {
    const bool isOpen = bitPlane < kMagnitudeBits && ((openPlanes[plane] >> bitPlane) & 1) != 0;
    return isOpen && order == this->levels && !refinement;
}

template <class T>
void CWaveletEncoder<T>::writeStream(CBitWriter& out) {
    const CNearestRounding rounding;
    misreadBit = kNeverMisread;
    SectionCounters counters;
    counters.reset(this->bits);
    SectionChooser<T> chooser(*streams, counters);
    writeTopPlane(out, this->bits);
    auto choice = chooser.choose(this->image->planes, this->levels);
    while (choice && !this->isCancelled()) {
        const auto [plane, order, refinement] = *choice;
        const auto bitPlane = static_cast<int>(counters.take(plane, order, refinement));
        writeSection(out, plane, order, refinement, bitPlane);
        choice.reset();
        // The header of plane 0 and order 0 begins with zero bits.
        if (needsZerosBehind(plane, order, refinement, bitPlane)) choice = chooser.choose(1, 0);
        if (!choice) choice = chooser.choose(this->image->planes, this->levels);
    }
    writeEndMark(out);
    out.flush();
    this->status = kComplete;
}

template <class T>
int CWaveletEncoder<T>::codeCoefficients(int arg) {
    if (this->isFreshStart() && !foldPlanes()) return this->status = kSuspended;
    if (encodeRows(arg)) return this->status = kSuspended;
    closeCoders();
    return kComplete;
}

template <class T>
int CWaveletEncoder<T>::writeWavelet(CBitWriter& out, int arg) {
    if (codeCoefficients(arg) == kSuspended) return kSuspended;
    out.setSize((estimateBits + estimateBits / 20 + 7) >> 3);
    writeStream(out);
    return this->status;
}

// Used by RecodeOrder.cpp as well.
template int CWaveletEncoder<short>::sampleCountBits() const;
template int CWaveletEncoder<int>::sampleCountBits() const;
template void CWaveletEncoder<short>::closeCoders();
template void CWaveletEncoder<int>::closeCoders();

template int CWaveletEncoder<short>::codeCoefficients(int);
template int CWaveletEncoder<int>::codeCoefficients(int);
template void CWaveletEncoder<short>::writeStream(CBitWriter&);
template void CWaveletEncoder<int>::writeStream(CBitWriter&);
template int CWaveletEncoder<short>::writeWavelet(CBitWriter&, int);
template int CWaveletEncoder<int>::writeWavelet(CBitWriter&, int);

}  // namespace qmx
