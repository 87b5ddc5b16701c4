#include "container/ExactEncoding.h"

#include <algorithm>
#include <cstring>
#include <functional>

#include "bitstream/CBitWriter.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/encode/SectionRescue.h"
#include "coding/syntax/FoldedValue.h"
#include "container/ExactCheck.h"
#include "container/RawPixels.h"
#include "container/StreamReading.h"

namespace qmx {
namespace {

/// 2-byte samples of so many bits have coefficients of 16 bits in files and of 32 in memory.
constexpr int kAmbiguousBits = static_cast<int>(MostBitsOfShort::inFiles);
/// The highest bit plane of coefficients whose folded form fits 16 bits.
constexpr int kHighestShortPlane = 13;

template <class T, class P>
class RowsOfJob final : public IRowSource<T> {
public:
    explicit RowsOfJob(const ExactJob& exactJob) : job(exactJob) {}
    void load(CImageData<T>& rows, int slot, int r) override { loadRow<P>(rows, slot, job.row(r)); }

private:
    const ExactJob& job;
};

}  // namespace

template <class T, class P>
CExactEncoder<T, P>::CExactEncoder(ExactJob& exactJob)
    : job(exactJob),
      image(job.header.xSize, job.header.ySize, job.header.planes(), job.memory, {}) {}

template <class T, class P>
ExactOutcome CExactEncoder<T, P>::encode() {
    if (!codeFirst(ThinImage::filtered)) return ExactOutcome::stopped;
    if (encoder->getLostCoefficients() != 0) return ExactOutcome::needsMoreBits;
    if (isInDoubt() && !isRestoredAsItIs()) {
        if (!hasPlanes && !codeFromPlanes(ThinImage::filtered)) return ExactOutcome::stopped;
        const ExactOutcome outcome = rescueSections();
        if (job.isStopped()) return ExactOutcome::stopped;
        if (outcome != ExactOutcome::exact) return outcome;
    }
    if (encoder->getEndlessSections() != 0) {
        encoder->sendEndlessRuns();
        job.rescues |= kEndlessRuns;
    }
    return ExactOutcome::exact;
}

template <class T, class P>
bool CExactEncoder<T, P>::encodePlain() {
    return codeFirst(ThinImage::asItIs);
}

/// Returns: false when stopped.
template <class T, class P>
bool CExactEncoder<T, P>::codeFirst(ThinImage thin) {
    return goesByRows(image.x, image.y) ? codeByRows() : codeFromPlanes(thin);
}

template <class T, class P>
bool CExactEncoder<T, P>::codeByRows() {
    makeEncoder();
    RowsOfJob<T, P> rows(job);
    return encoder->codeRows(rows) == kComplete && !job.isStopped();
}

template <class T, class P>
bool CExactEncoder<T, P>::codeFromPlanes(ThinImage thin) {
    image.allocate();
    hasPlanes = true;
    if (!loadPlanes()) return false;
    if (thin == ThinImage::filtered) filterThinImage();
    return code();
}

/// Returns: false when stopped.
template <class T, class P>
bool CExactEncoder<T, P>::loadPlanes() {
    for (int r = 0; r < image.y && image.x != 0; ++r) {
        if (job.isStopped()) return false;
        loadRow<P>(image, r, job.row(r));
    }
    return true;
}

/// Without a level nothing is filtered on the way here, but decoders filter lines of 4 samples and
/// more all the same.
template <class T, class P>
void CExactEncoder<T, P>::filterThinImage() {
    if (levelCount(image.x, image.y) != 0) return;
    for (int p = 0; p < image.planes; ++p) {
        const std::ptrdiff_t samples = std::ptrdiff_t{image.stride} * image.y;
        const std::pmr::vector<T> before(image.plane[p], image.plane[p] + samples, job.memory);
        if (job.isStopped()) return;
        for (int r = 0; r < image.y; ++r)
            filter.transform(image.row(p, r), image.x, 1);
        for (int c = 0; c < image.x; ++c)
            filter.transform(image.plane[p] + c, image.y, static_cast<unsigned long>(image.stride));
        if (!std::equal(before.begin(), before.end(), image.plane[p])) job.rescues |= kThinFilter;
    }
}

template <class T, class P>
void CExactEncoder<T, P>::makeEncoder() {
    encoder.emplace(&image, &filter, false, job.memory);
    if (job.stop != nullptr) encoder->watch(*job.stop);
}

/// Returns: false when stopped.
template <class T, class P>
bool CExactEncoder<T, P>::code(ClosingRuns closing) {
    makeEncoder();
    encoder->setClosingRuns(0, closing);
    encoder->transform();
    return encoder->codeCoefficients(0) == kComplete && !job.isStopped();
}

template <class T, class P>
bool CExactEncoder<T, P>::isAmbiguous() const {
    return !kHasShort && job.header.bitsPerPixel == kAmbiguousBits;
}

/// Returns: whether the plain stream may be read wrongly, by 16-bit coefficients or at all.
template <class T, class P>
bool CExactEncoder<T, P>::isInDoubt() const {
    const bool exceedsShort = isAmbiguous() && encoder->getTopPlane() > kHighestShortPlane;
    return exceedsShort || encoder->getOverlongSections() != 0;
}

/// Some streams in doubt come out right: by chance behind sections that are too long, modulo 2^16
/// with samples beyond their bits. Of the former, those do not count whose end mark decoders do not come
/// to: with another one in the middle, a prefix would pass for the whole.
template <class T, class P>
bool CExactEncoder<T, P>::isRestoredAsItIs() {
    const auto streamBytes = static_cast<std::size_t>((encoder->getStreamBits() + 7) / 8);
    const auto stream = makeArray<unsigned char>(streamBytes, job.memory);
    CBitWriter writer(stream.get(), streamBytes);
    encoder->writeStream(writer);
    const WrittenStream written{stream.get(), streamBytes, encoder->getMisreadBit()};
    return endsAtItsEnd(job.header, written, encoder->getStreamBits()) &&
           restoresExactly(job, stream.get(), streamBytes);
}

template <class T, class P>
ExactOutcome CExactEncoder<T, P>::rescueSections() {
    // Quirk 19: decoders with 16 bits do not see multiples of 2^16, those with 32 see representatives.
    if (isAmbiguous()) return ExactOutcome::needsMoreBits;
    bool isRescued = false;
    if constexpr (kHasShort) {
        isRescued = moveToOtherRepresentatives();
    } else {
        isRescued = addWholeWraps();
    }
    return isRescued ? ExactOutcome::exact : ExactOutcome::impossible;
}

template <class T, class P>
bool CExactEncoder<T, P>::moveToOtherRepresentatives() {
    for (int p = 0; p < image.planes; ++p)
        if (!recode(p)) return false;
    return encoder->getOverlongSections() == 0;
}

/// Returns: whether the sections of plane's coarsest order fit now.
template <class T, class P>
bool CExactEncoder<T, P>::recode(int plane) {
    const FoldedValues values = encoder->getCoarsestValues(plane);
    const std::uint64_t longest = encoder->getLongestSectionBits();
    if (excessBits(values, longest, ClosingRuns::written) == 0) return true;
    const auto accept = [&](const FoldedValues& moved, ClosingRuns closing) {
        encoder->recodeCoarsest(plane, moved, closing);
        noteMove(kOtherRepresentative, moved != values, closing);
        return true;
    };
    return SectionRescue(values, longest, COtherRepresentative(), job.stop)
        .search(std::ref(accept));
}

template <class T, class P>
bool CExactEncoder<T, P>::addWholeWraps() {
    const FoldedValues values = encoder->getCoarsestValues(0);
    const std::uint64_t longest = encoder->getLongestSectionBits();
    const CWholeWraps move(encoder->getLevels());
    const auto accept = [&](const FoldedValues& moved, ClosingRuns closing) {
        // Details change by up to 1 with it, so that only coding shows whether all sections fit.
        if (!codeWithWraps(values, moved, closing)) return true;
        if (encoder->getOverlongSections() != 0) return false;
        noteMove(kWholeWraps, moved != values, closing);
        return true;
    };
    return SectionRescue(values, longest, move, job.stop).search(std::ref(accept));
}

/// Codes the image with an offset whose coefficients lead from some values to others.
/// Returns: false when stopped.
template <class T, class P>
bool CExactEncoder<T, P>::codeWithWraps(const FoldedValues& from, const FoldedValues& to,
                                        ClosingRuns closing) {
    const int step = 1 << levelCount(image.x, image.y);
    encoder.reset();
    std::size_t i = 0;
    for (int r = 0; r < image.y; ++r) {
        if (job.isStopped()) return false;
        std::fill_n(image.row(0, r), image.stride, T{0});
        for (int c = 0; r % step == 0 && c < image.x; c += step, ++i)
            image.row(0, r)[c] = static_cast<T>(unfold<T>(to[i]) - unfold<T>(from[i]));
    }
    CWaveletDecoder<T> inverse(&image, &filter, false, job.memory);
    if (job.stop != nullptr) inverse.watch(*job.stop);
    inverse.untransform();
    return addSamples() && code(closing);
}

/// Returns: false when stopped.
template <class T, class P>
bool CExactEncoder<T, P>::addSamples() {
    for (int r = 0; r < image.y; ++r) {
        if (job.isStopped()) return false;
        const unsigned char* bytes = job.row(r);
        for (int c = 0; c < image.x; ++c) {
            P sample;
            std::memcpy(&sample, bytes + static_cast<std::size_t>(c) * sizeof sample,
                        sizeof sample);
            image.row(0, r)[c] = static_cast<T>(image.row(0, r)[c] + sample);
        }
    }
    return true;
}

template <class T, class P>
void CExactEncoder<T, P>::noteMove(Rescues move, bool isMoved, ClosingRuns closing) {
    if (isMoved) job.rescues |= move;
    if (closing != ClosingRuns::written) job.rescues |= kClosingRuns;
}

int raisedBits(const ExactJob& job) {
    unsigned all = 0;
    for (int r = 0; r < job.header.ySize && !job.isStopped(); ++r) {
        for (int c = 0; c < job.header.xSize; ++c) {
            std::uint16_t sample;
            std::memcpy(&sample, job.row(r) + static_cast<std::size_t>(c) * sizeof sample,
                        sizeof sample);
            all |= sample;
        }
    }
    return std::max(bitLength(all), job.header.bitsPerPixel + 1);
}

bool isOutOfReach(const ExactJob& job) {
    if (std::min(job.header.xSize, job.header.ySize) != 1) return false;
    const auto isNotZero = [](unsigned char byte) { return byte != 0; };
    for (int r = 0; r < job.header.ySize; ++r)
        if (std::any_of(job.row(r), job.row(r) + job.header.rawRowBytes(), isNotZero)) return true;
    return false;
}

template class CExactEncoder<short, unsigned char>;
template class CExactEncoder<short, unsigned short>;
template class CExactEncoder<int, unsigned short>;

}  // namespace qmx
