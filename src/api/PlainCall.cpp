// Compression to the stream that the command line tool makes as well.

#include "api/CompressRequest.h"
#include "container/ExactCheck.h"
#include "container/Restoration.h"

namespace qmx {
namespace {

tesk_loss lossNumber(Loss loss) {
    switch (loss) {
        case Loss::none:
        case Loss::suspension:  // calls do not suspend
            return TESK_LOSS_NONE;
        case Loss::sideOfOne:
            return TESK_LOSS_SIDE_OF_ONE;
        case Loss::thinImage:
            return TESK_LOSS_THIN_IMAGE;
        case Loss::wrappedCoefficient:
            return TESK_LOSS_WRAPPED;
        case Loss::endlessRun:
            return TESK_LOSS_ENDLESS_RUN;
        case Loss::overlongSection:
            return TESK_LOSS_LONG_SECTION;
        case Loss::cut:
            return TESK_LOSS_BUDGET;
    }
    return TESK_LOSS_UNCHECKED;
}

/// Returns: what a complete stream loses, as far as there is memory to find out.
template <class T>
tesk_loss lossOfComplete(const CWaveletEncoder<T>& encoder, const ExactJob& job,
                         const WrittenStream& written) {
    const Loss suspect = suspectLoss(encoder, job.header);
    if (isCertain(suspect) || !endsAtItsEnd(job.header, written, encoder.getStreamBits()))
        return lossNumber(suspect);
    try {
        return restoresInMemory(job, written.bytes, written.sizeBytes) ? TESK_LOSS_NONE
                                                                       : lossNumber(suspect);
    } catch (const std::bad_alloc&) {
        return TESK_LOSS_UNCHECKED;
    }
}

/// The same for a stream that was cut, which decoders take for complete when it only lacks padding.
template <class T>
tesk_loss lossOfCut(const CWaveletEncoder<T>& encoder, const ExactJob& job,
                    const WrittenStream& written) {
    const Reading reading = readingOf(job.header, written);
    if (reading == Reading::wrong || reading == Reading::refused) return TESK_LOSS_LONG_SECTION;
    if (reading == Reading::part) return TESK_LOSS_BUDGET;
    const tesk_loss loss = lossOfComplete(encoder, job, written);
    return loss == TESK_LOSS_NONE ? TESK_LOSS_BUDGET : loss;
}

template <class T, class P>
tesk_status compressImage(CompressRequest& request, CCallMemory& memory) {
    ExactJob job = jobOf(request, memory);
    CExactEncoder<T, P> coded(job);
    if (!coded.encodePlain()) return TESK_STOPPED;
    CWaveletEncoder<T>& encoder = coded.getEncoder();
    const WrittenStream written = writeCoded(request, encoder, memory);
    if (written.bytes == nullptr) return TESK_BUFFER_TOO_SMALL;
    if (job.isStopped()) return TESK_STOPPED;
    request.loss =
        request.isCut ? lossOfCut(encoder, job, written) : lossOfComplete(encoder, job, written);
    if (job.isStopped()) return TESK_STOPPED;
    return request.isCut ? TESK_CUT : TESK_OK;
}

}  // namespace

tesk_status runPlainCall(CompressRequest& request, CCallMemory& memory) {
    return dispatchSamples(
        request.header, MostBitsOfShort::inMemory,
        [&]<class T, class P>() { return compressImage<T, P>(request, memory); },
        [] { return TESK_UNSUPPORTED_FORMAT; });
}

}  // namespace qmx
