// Compression to a stream that restores the image, as long as no budget cuts it.

#include "api/CompressRequest.h"
#include "container/Comparison.h"

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

}  // namespace

tesk_status runExactCall(CompressRequest& request, ImageJob& job, CCallMemory& memory) {
    Rescues rescues = 0;
    WrittenStream written;
    const std::optional<Loss> loss = encodeExactly(job, rescues, [&](auto& sections) {
        written = writeCoded(request, job.header, sections, memory);
    });
    if (!loss || job.stop.isSet()) return TESK_STOPPED;
    if (*loss != Loss::none) return refuse(request, lossNumber({*loss}));
    if (written.bytes == nullptr) return TESK_BUFFER_TOO_SMALL;
    request.rescue = rescues;
    if (request.isCut) return cut(request);
    if (request.budgetBytes != 0 || request.has(TESK_UNVERIFIED)) return TESK_OK;
    const bool isRestored = restoresExactly(job, written);
    if (job.stop.isSet()) return TESK_STOPPED;
    return isRestored ? TESK_OK : refuse(request, TESK_LOSS_UNKNOWN);
}

}  // namespace qmx
