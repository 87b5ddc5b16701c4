#include "container/CExactEncoder.h"

#include <algorithm>

#include "bitstream/CBitWriter.h"
#include "coding/encode/CSectionRescue.h"
#include "coding/encode/EncodeRows.h"
#include "coding/encode/SectionLengths.h"
#include "container/COffsetSource.h"
#include "container/CRegainedRows.h"
#include "container/NarrowSamples.h"

namespace qmx {
namespace {

/// 2-byte samples of so many bits have coefficients of 16 bits in files and of 32 in memory.
constexpr int kAmbiguousBits = static_cast<int>(MostBitsOfShort::inFiles);
/// The highest bit plane of coefficients whose folded form fits 16 bits.
constexpr int kHighestShortPlane = 13;

}  // namespace

template <class T>
CExactEncoder<T>::CExactEncoder(ImageJob& imageJob, bool filtersThinImages)
    : job(imageJob), pixels(job.pixels, job.header.bytesPerPixel) {
    coded.emplace(shapeOf(job.header), job.memory);
    rows.emplace(*coded, RowEncoding{filtersThinImages, 0, job.stop});
}

template <class T>
void CExactEncoder<T>::finish() {
    rows->finish();
    if (rows->isChangedByFilter()) done |= kThinFilter;
    rows.reset();
}

template <class T>
bool CExactEncoder<T>::isTooNarrow() const {
    if (!kHasShort || !hasWideCoefficients(job.header)) return false;
    const CodedFacts& facts = coded->facts();
    return pixels.usedBits() >= kNarrowSamples || facts.lostCoefficients != 0 ||
           facts.overlongSections != 0;
}

template <class T>
std::optional<Loss> CExactEncoder<T>::makeRestorable() {
    if (coded->facts().lostCoefficients != 0) return Loss::wrappedCoefficient;
    if (isInDoubt() && !isRestoredAsItIs()) {
        if (isAmbiguous()) {
            // Quirk 18: decoders with 16 bits do not see multiples of 2^16, those with 32 see
            // representatives. With more declared bits the sections stay as they are, and all have 32.
            job.header.bitsPerPixel = static_cast<std::uint8_t>(raisedBits(job));
            done |= kDeclaredBits;
            return makeRestorable();
        }
        const bool isRescued = rescueSections();
        if (job.stop.isSet()) return std::nullopt;
        if (!isRescued) return Loss::overlongSection;
    }
    if (coded->facts().endlessSections != 0) {
        coded->sendEndlessRuns();
        done |= kEndlessRuns;
    }
    return Loss::none;
}

template <class T>
bool CExactEncoder<T>::isAmbiguous() const {
    return !kHasShort && job.header.bitsPerPixel == kAmbiguousBits;
}

/// Returns: whether the plain stream may be read wrongly, by 16-bit coefficients or at all.
template <class T>
bool CExactEncoder<T>::isInDoubt() const {
    const bool exceedsShort = isAmbiguous() && coded->topPlane() > kHighestShortPlane;
    return exceedsShort || coded->facts().overlongSections != 0;
}

/// Some streams in doubt come out right: by chance behind sections that are too long, modulo 2^16
/// with samples beyond their bits. Of the former, those do not count whose end mark decoders do not come
/// to: with another one in the middle, a prefix would pass for the whole.
template <class T>
bool CExactEncoder<T>::isRestoredAsItIs() {
    const std::size_t streamBytes = sizeOfBytes(coded->facts().streamBytes());
    const auto stream = makeArray<unsigned char>(streamBytes, job.memory);
    CBitWriter writer(stream.get(), streamBytes);
    coded->writeStream(writer);
    const WrittenStream written{stream.get(), streamBytes, coded->facts().misreadBit};
    return endsAtItsEnd(job.header, written, coded->facts().streamBits) &&
           restoresExactly(job, written);
}

/// Returns: whether all sections fit now; any value when stopped.
template <class T>
bool CExactEncoder<T>::rescueSections() {
    if constexpr (kHasShort)
        return moveToOtherRepresentatives();
    else
        return addWholeWraps();
}

template <class T>
bool CExactEncoder<T>::moveToOtherRepresentatives() {
    for (int p = 0; p < job.header.planes(); ++p)
        if (!recode(p)) return false;
    return coded->facts().overlongSections == 0;
}

/// Returns: whether the sections of plane's coarsest order fit now.
template <class T>
bool CExactEncoder<T>::recode(int plane) {
    const FoldedValues values = coded->coarsestValues(plane);
    const std::uint64_t longest = coded->longestCoarsestBits();
    if (excessBits(values, longest, ClosingRuns::written) == 0) return true;
    const auto accept = [&](const FoldedValues& moved, ClosingRuns closing) {
        coded->recodeCoarsest(plane, moved, closing);
        noteMove(kOtherRepresentative, moved != values, closing);
        return true;
    };
    return CSectionRescue(values, longest, COtherRepresentative(), job.stop)
        .search(std::ref(accept));
}

template <class T>
bool CExactEncoder<T>::addWholeWraps() {
    const FoldedValues values = coded->coarsestValues(0);
    const std::uint64_t longest = coded->longestCoarsestBits();
    const CWholeWraps move(coded->levels());
    std::optional<COwnStream> ownStream;
    if (!job.pixels.canRepeat()) ownStream.emplace(*coded, job.memory);
    const auto accept = [&](const FoldedValues& moved, ClosingRuns closing) {
        coded.reset();
        std::optional<CRegainedRows<T>> regained;
        if (ownStream) regained.emplace(*ownStream, shapeOf(job.header), job.memory, job.stop);
        IRowSource<T>& original = regained ? static_cast<IRowSource<T>&>(*regained) : pixels;
        COffsetSource<T> source(original, shapeOf(job.header), values, moved, job.memory);
        // Details change by up to 1 with it, so that only coding shows whether all sections fit.
        if (!codeAgain(source, closing)) return true;
        if (coded->facts().overlongSections != 0) return false;
        noteMove(kWholeWraps, moved != values, closing);
        return true;
    };
    return CSectionRescue(values, longest, move, job.stop).search(std::ref(accept));
}

/// Returns: false when stopped.
template <class T>
bool CExactEncoder<T>::codeAgain(IRowSource<T>& source, ClosingRuns closing) {
    coded.emplace(shapeOf(job.header), job.memory);
    coded->setClosingRuns(0, closing);
    return encodeRows(source, *coded, {false, 0, job.stop}).isComplete;
}

template <class T>
void CExactEncoder<T>::noteMove(Rescues move, bool isMoved, ClosingRuns closing) {
    if (isMoved) done |= move;
    if (closing != ClosingRuns::written) done |= kClosingRuns;
}

int raisedBits(const ImageJob& job) {
    const unsigned used = job.pixels.usedBits(job.header, job.stop);
    return std::max(bitLength(used), job.header.bitsPerPixel + 1);
}

bool isOutOfReach(const ImageJob& job) {
    return std::min(job.header.xSize, job.header.ySize) == 1 &&
           job.pixels.usedBits(job.header, job.stop) != 0;
}

template class CExactEncoder<short>;
template class CExactEncoder<int>;

}  // namespace qmx
