// Compression to a stream that restores the image.

#include <algorithm>

#include "api/CompressRequest.h"
#include "bitstream/CBitWriter.h"
#include "container/ExactCheck.h"

namespace qmx {
namespace {

static_assert(kThinFilter == TESK_RESCUE_THIN_FILTER && kDeclaredBits == TESK_RESCUE_DECLARED_BITS);
static_assert(kClosingRuns == TESK_RESCUE_CLOSING_RUNS &&
              kOtherRepresentative == TESK_RESCUE_OTHER_REPRESENTATIVE);
static_assert(kWholeWraps == TESK_RESCUE_WHOLE_WRAPS && kEndlessRuns == TESK_RESCUE_ENDLESS_RUNS);

tesk_status refuse(CompressRequest& request, tesk_loss loss) {
    request.loss = loss;
    return TESK_NOT_RESTORABLE;
}

tesk_loss impossibleLoss(const ExactJob& job) {
    const bool isLine = std::min(job.header.xSize, job.header.ySize) == 1;
    return isLine ? TESK_LOSS_SIDE_OF_ONE : TESK_LOSS_LONG_SECTION;
}

}  // namespace

tesk_status runExactCall(CompressRequest& request, CCallMemory& memory) {
    ExactJob job{request.header, request.pixels, request.strideBytes, &memory};
    job.stop = &request.codec.stopRequested;
    unsigned char* out = nullptr;
    const ExactOutcome outcome = encodeExactly(job, [&](auto& encoder) {
        request.header = job.header;
        out = placeHeader(request, completeBytesOf(encoder), memory);
        if (out == nullptr) return;
        CBitWriter writer(out + sizeof(TKHeader), request.streamBytes - sizeof(TKHeader));
        encoder.writeStream(writer);
    });
    if (outcome == ExactOutcome::stopped) return TESK_STOPPED;
    if (outcome == ExactOutcome::impossible) return refuse(request, impossibleLoss(job));
    if (out == nullptr) return TESK_BUFFER_TOO_SMALL;
    request.rescue = job.rescues;
    if (request.has(TESK_UNVERIFIED)) return TESK_OK;
    const bool isRestored =
        restoresExactly(job, out + sizeof(TKHeader), request.streamBytes - sizeof(TKHeader));
    if (request.codec.isStopped()) return TESK_STOPPED;
    return isRestored ? TESK_OK : refuse(request, TESK_LOSS_UNKNOWN);
}

}  // namespace qmx
