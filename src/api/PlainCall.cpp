// Compression to the stream that the command line tool makes as well.

#include <new>

#include "api/CompressRequest.h"
#include "container/CExactEncoder.h"
#include "container/CoefficientDispatch.h"

namespace qmx {
namespace {

/// Returns: what a stream loses, as far as there is memory to find out.
tesk_loss lossOf(const CompressRequest& request, const ImageJob& job, const CodedFacts& facts,
                 const WrittenStream& written) {
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
tesk_status compressImage(CompressRequest& request, const ImageJob& job, CCallMemory& memory) {
    CExactEncoder<T> encoder(job);
    if (!encoder.encodePlain()) return TESK_STOPPED;
    const WrittenStream written = writeCoded(request, job.header, encoder.sections(), memory);
    if (written.bytes == nullptr) return TESK_BUFFER_TOO_SMALL;
    if (job.stop.isSet()) return TESK_STOPPED;
    request.loss = lossOf(request, job, encoder.sections().facts(), written);
    // Decoders take a stream that only lacks padding for complete, but it was cut.
    if (request.isCut && request.loss == TESK_LOSS_NONE) request.loss = TESK_LOSS_BUDGET;
    if (job.stop.isSet()) return TESK_STOPPED;
    return request.isCut ? TESK_CUT : TESK_OK;
}

}  // namespace

tesk_loss lossNumber(const LossReport& report) {
    switch (report.loss) {
        case Loss::none:
        case Loss::suspension:  // calls do not suspend
            return report.reading == Reading::part ? TESK_LOSS_BUDGET : TESK_LOSS_NONE;
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

tesk_status runPlainCall(CompressRequest& request, const ImageJob& job, CCallMemory& memory) {
    return dispatchCoefficients(
        request.header, MostBitsOfShort::inMemory,
        [&]<class T>() { return compressImage<T>(request, job, memory); },
        [] { return TESK_UNSUPPORTED_FORMAT; });
}

}  // namespace qmx
