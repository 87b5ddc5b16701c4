// Compression to a stream that restores the image, as long as no budget cuts it.

#include <algorithm>

#include "api/CompressRequest.h"
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

tesk_status cut(CompressRequest& request) {
    request.loss = TESK_LOSS_BUDGET;
    return TESK_CUT;
}

tesk_loss impossibleLoss(const ExactJob& job) {
    const bool isLine = std::min(job.header.xSize, job.header.ySize) == 1;
    return isLine ? TESK_LOSS_SIDE_OF_ONE : TESK_LOSS_LONG_SECTION;
}

}  // namespace

tesk_status runExactCall(CompressRequest& request, CCallMemory& memory) {
    ExactJob job = jobOf(request, memory);
    WrittenStream written;
    const ExactOutcome outcome = encodeExactly(job, [&](auto& encoder) {
        request.header = job.header;
        written = writeCoded(request, encoder, memory);
    });
    if (outcome == ExactOutcome::stopped || job.isStopped()) return TESK_STOPPED;
    if (outcome == ExactOutcome::impossible) return refuse(request, impossibleLoss(job));
    if (written.bytes == nullptr) return TESK_BUFFER_TOO_SMALL;
    request.rescue = job.rescues;
    if (request.isCut) return cut(request);
    if (request.budgetBytes != 0 || request.has(TESK_UNVERIFIED)) return TESK_OK;
    const bool isRestored = restoresExactly(job, written.bytes, written.sizeBytes);
    if (job.isStopped()) return TESK_STOPPED;
    return isRestored ? TESK_OK : refuse(request, TESK_LOSS_UNKNOWN);
}

}  // namespace qmx
