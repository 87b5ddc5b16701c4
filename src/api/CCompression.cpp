#include "api/CCompression.h"

#include <algorithm>
#include <new>
#include <optional>

#include "bitstream/CBitWriter.h"
#include "bitstream/Memory.h"
#include "container/Comparison.h"
#include "container/NarrowSamples.h"

namespace qmx {
namespace {

static_assert(kThinFilter == TESK_RESCUE_THIN_FILTER && kDeclaredBits == TESK_RESCUE_DECLARED_BITS);
static_assert(kClosingRuns == TESK_RESCUE_CLOSING_RUNS &&
              kOtherRepresentative == TESK_RESCUE_OTHER_REPRESENTATIVE);
static_assert(kWholeWraps == TESK_RESCUE_WHOLE_WRAPS && kEndlessRuns == TESK_RESCUE_ENDLESS_RUNS);

/// An image with a side of 1 has no coefficients that a filter could change.
bool filtersThinImages(const TKHeader& header, std::uint32_t flags) {
    return (flags & TESK_PLAIN) == 0 && std::min(header.xSize, header.ySize) > 1;
}

tesk_status refuse(CompressRequest& request, tesk_loss loss) {
    request.loss = loss;
    return TESK_NOT_RESTORABLE;
}

}  // namespace

CCompression::CCompression(ImageJob& imageJob, std::uint32_t flags, MostBitsOfShort mostBits)
    : job(imageJob), encoder(job.header, mostBits, job, filtersThinImages(job.header, flags)) {}

void CCompression::takeRow() {
    encoder.with([](auto& coder) { coder.takeRow(); });
}

std::uint32_t CCompression::rowsLeft() {
    return encoder.with([this](auto& coder) {
        return static_cast<std::uint32_t>(job.header.ySize - coder.rowsTaken());
    });
}

void CCompression::finish() {
    encoder.with([](auto& coder) { coder.finish(); });
}

bool CCompression::isTooNarrow() {
    return encoder.with([](auto& coder) { return coder.isTooNarrow(); });
}

tesk_status CCompression::conclude(CompressRequest& request) {
    // A budget asks for as much as there can be, also of an image that no stream holds.
    const bool isBeyond = !request.has(TESK_PLAIN) && isOutOfReach(job);
    if (isBeyond && request.budgetBytes == 0) return refuse(request, TESK_LOSS_SIDE_OF_ONE);
    const bool isPlain = isBeyond || request.has(TESK_PLAIN);
    const tesk_status status = encoder.with([&](auto& coder) {
        return isPlain ? concludePlain(coder, request) : concludeExact(coder, request);
    });
    const bool isCompared =
        !isPlain && request.budgetBytes == 0 && !request.has(TESK_UNVERIFIED) && status == TESK_OK;
    return isCompared ? compare(request) : status;
}

/// Puts header and stream in their place, as far as the budget lets them. Returns: whether there is room.
template <class T>
bool CCompression::write(CCodedSections<T>& sections, CompressRequest& request) {
    const std::size_t completeBytes =
        sizeOfBytes(sizeof job.header + sections.facts().streamBytes());
    request.isCut = request.budgetBytes != 0 && request.budgetBytes < completeBytes;
    request.streamBytes = request.isCut ? request.budgetBytes : completeBytes;
    unsigned char* out = request.place.take(request.streamBytes, *job.memory);
    if (out == nullptr) return false;
    std::memcpy(out, &job.header, sizeof job.header);
    out += sizeof job.header;
    const std::size_t bytesBehindHeader = request.streamBytes - sizeof job.header;
    CBitWriter writer(out, bytesBehindHeader);
    sections.writeWhatFits(writer, job.stop);
    written = {out, bytesBehindHeader, sections.facts().misreadBit};
    return true;
}

/// Returns: what a plain stream loses, as far as there is memory to find out.
tesk_loss CCompression::lossOf(const CompressRequest& request, const CodedFacts& facts) {
    StreamFate fate;
    fate.stream = written;
    fate.isLossAskedFor = request.isCut;
    fate.isFalseEndLoss = true;
    try {
        return lossNumber(findLoss(job, MostBitsOfShort::inMemory, facts, fate));
    } catch (const std::bad_alloc&) {
        return TESK_LOSS_UNCHECKED;
    }
}

template <class T>
tesk_status CCompression::concludePlain(CExactEncoder<T>& coder, CompressRequest& request) {
    if (!write(coder.sections(), request)) return TESK_BUFFER_TOO_SMALL;
    if (job.stop.isSet()) return TESK_STOPPED;
    request.loss = lossOf(request, coder.sections().facts());
    // Decoders take a stream that only lacks padding for complete, but it was cut.
    if (request.isCut && request.loss == TESK_LOSS_NONE) request.loss = TESK_LOSS_BUDGET;
    if (job.stop.isSet()) return TESK_STOPPED;
    return request.isCut ? TESK_CUT : TESK_OK;
}

template <class T>
tesk_status CCompression::concludeExact(CExactEncoder<T>& coder, CompressRequest& request) {
    const std::optional<Loss> loss = coder.makeRestorable();
    if (!loss || job.stop.isSet()) return TESK_STOPPED;
    if (*loss != Loss::none) return refuse(request, lossNumber({*loss}));
    const bool hasRoom = write(coder.sections(), request);
    if (job.stop.isSet()) return TESK_STOPPED;
    if (!hasRoom) return TESK_BUFFER_TOO_SMALL;
    request.rescue |= coder.rescues();
    if (!request.isCut) return TESK_OK;
    request.loss = TESK_LOSS_BUDGET;
    return TESK_CUT;
}

tesk_status CCompression::compare(CompressRequest& request) {
    // The sections are in the stream, too, and would stand beside the decoder.
    encoder.reset();
    const bool isRestored = restoresExactly(job, written);
    if (job.stop.isSet()) return TESK_STOPPED;
    return isRestored ? TESK_OK : refuse(request, TESK_LOSS_UNKNOWN);
}

namespace {

/// Returns: as conclude; nothing when 16-bit coefficients do not do.
std::optional<tesk_status> compressWith(MostBitsOfShort mostBits, ImageJob& job,
                                        CompressRequest& request) {
    CCompression compression(job, request.flags, mostBits);
    while (compression.rowsLeft() != 0) {
        compression.takeRow();
        if (job.stop.isSet()) return TESK_STOPPED;
        if (compression.isTooNarrow()) return std::nullopt;
    }
    compression.finish();
    if (compression.isTooNarrow()) return std::nullopt;
    return compression.conclude(request);
}

tesk_status compressOnce(ImageJob& job, CompressRequest& request) {
    const bool isNarrow = hasWideCoefficients(job.header) &&
                          job.pixels.glimpseBits(job.header, job.stop) < kNarrowSamples;
    std::optional<tesk_status> status;
    if (isNarrow) status = compressWith(MostBitsOfShort::ofNarrowSamples, job, request);
    if (!status) status = compressWith(MostBitsOfShort::inMemory, job, request);
    return *status;
}

}  // namespace

tesk_status compressWhole(ImageJob& job, CompressRequest& request) {
    for (;;) {
        const tesk_status status = compressOnce(job, request);
        const bool needsBits = status == TESK_NOT_RESTORABLE && request.loss == TESK_LOSS_WRAPPED;
        if (!needsBits) return status;
        job.header.bitsPerPixel = static_cast<std::uint8_t>(raisedBits(job));
        request.loss = TESK_LOSS_NONE;
        request.rescue = TESK_RESCUE_DECLARED_BITS;
    }
}

}  // namespace qmx
