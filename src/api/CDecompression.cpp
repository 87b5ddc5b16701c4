#include "api/CDecompression.h"

#include "bitstream/Status.h"

namespace qmx {

tesk_status CDecompression::open() {
    switch (decoder.with([](auto& coder) { return coder.open(); })) {
        case kComplete:
            return TESK_OK;
        case kCut:
            return TESK_CUT;
        case kKilled:
            return TESK_STOPPED;
        default:
            return TESK_INVALID_STREAM;
    }
}

tesk_status CDecompression::store(unsigned char* out, std::size_t strideBytes,
                                  std::uint32_t count) {
    return decoder.with([&](auto& coder) {
        for (std::uint32_t r = 0; r < count; ++r)
            if (!coder.storeNext(out == nullptr ? out : out + r * strideBytes)) return TESK_STOPPED;
        return TESK_OK;
    });
}

std::uint32_t CDecompression::rowsLeft() {
    const int rows = shapeOf(job.header).reducedBy(job.reduction).height;
    return decoder.with(
        [rows](auto& coder) { return static_cast<std::uint32_t>(rows - coder.rowsStored()); });
}

}  // namespace qmx
