#include "api/CompressRequest.h"

namespace qmx {

void report(const CompressRequest& request, tesk_status status, tesk_result* result) {
    if (result == nullptr) return;
    const bool isWritten = status == TESK_OK || status == TESK_CUT;
    result->stream_bytes = isWritten || status == TESK_BUFFER_TOO_SMALL ? request.streamBytes : 0;
    result->loss = isWritten || status == TESK_NOT_RESTORABLE ? request.loss : TESK_LOSS_NONE;
    result->rescue = isWritten ? request.rescue : 0;
}

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

}  // namespace qmx
