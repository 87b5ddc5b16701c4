#include "container/CExactEncoder.h"

#include <algorithm>
#include <cstring>

#include "bitstream/CBitWriter.h"
#include "coding/encode/CSectionRescue.h"
#include "coding/encode/SectionLengths.h"
#include "container/COffsetSource.h"

namespace qmx {
namespace {

/// 2-byte samples of so many bits have coefficients of 16 bits in files and of 32 in memory.
constexpr int kAmbiguousBits = static_cast<int>(MostBitsOfShort::inFiles);
/// The highest bit plane of coefficients whose folded form fits 16 bits.
constexpr int kHighestShortPlane = 13;

}  // namespace

template <class T>
CExactEncoder<T>::CExactEncoder(const ImageJob& imageJob)
    : job(imageJob), pixels(job.pixels, job.header.bytesPerPixel) {}

template <class T>
std::optional<Loss> CExactEncoder<T>::encode() {
    if (!code(pixels, ClosingRuns::written, true)) return std::nullopt;
    if (coded->facts().lostCoefficients != 0) return Loss::wrappedCoefficient;
    if (isInDoubt() && !isRestoredAsItIs()) {
        // Quirk 18: decoders with 16 bits do not see multiples of 2^16, those with 32 see representatives.
        if (isAmbiguous()) return Loss::wrappedCoefficient;
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
bool CExactEncoder<T>::encodePlain() {
    return code(pixels, ClosingRuns::written, false);
}

/// Returns: false when stopped.
template <class T>
bool CExactEncoder<T>::code(IRowSource<T>& source, ClosingRuns closing, bool filtersThinImages) {
    coded.emplace(shapeOf(job.header), job.memory);
    coded->setClosingRuns(0, closing);
    const RowsEncoded encoded = encodeRows(source, *coded, {filtersThinImages, 0, job.stop});
    if (encoded.isChangedByFilter) done |= kThinFilter;
    return encoded.isComplete;
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
    const auto streamBytes = static_cast<std::size_t>(coded->facts().streamBytes());
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
    const auto accept = [&](const FoldedValues& moved, ClosingRuns closing) {
        coded.reset();
        COffsetSource<T> source(pixels, shapeOf(job.header), values, moved, job.memory);
        // Details change by up to 1 with it, so that only coding shows whether all sections fit.
        if (!code(source, closing, false)) return true;
        if (coded->facts().overlongSections != 0) return false;
        noteMove(kWholeWraps, moved != values, closing);
        return true;
    };
    return CSectionRescue(values, longest, move, job.stop).search(std::ref(accept));
}

template <class T>
void CExactEncoder<T>::noteMove(Rescues move, bool isMoved, ClosingRuns closing) {
    if (isMoved) done |= move;
    if (closing != ClosingRuns::written) done |= kClosingRuns;
}

int raisedBits(const ImageJob& job) {
    unsigned all = 0;
    for (int r = 0; r < job.header.ySize && !job.stop.isSet(); ++r) {
        const unsigned char* row = job.pixels.row(r);
        for (std::size_t c = 0; c < job.header.xSize; ++c) {
            std::uint16_t sample;
            std::memcpy(&sample, row + c * sizeof sample, sizeof sample);
            all |= sample;
        }
    }
    return std::max(bitLength(all), job.header.bitsPerPixel + 1);
}

bool isOutOfReach(const ImageJob& job) {
    if (std::min(job.header.xSize, job.header.ySize) != 1) return false;
    const auto isNotZero = [](unsigned char byte) { return byte != 0; };
    for (int r = 0; r < job.header.ySize; ++r) {
        const unsigned char* row = job.pixels.row(r);
        if (std::any_of(row, row + job.header.rawRowBytes(), isNotZero)) return true;
    }
    return false;
}

template class CExactEncoder<short>;
template class CExactEncoder<int>;

}  // namespace qmx
