// The call of the C interface that finds the end of a stream.

#include <algorithm>

#include "api/CodecHandle.h"
#include "container/StreamReading.h"

namespace qmx {
namespace {

/// Returns: bytes of a complete stream whose end mark ends with a bit, counted from behind its header.
std::uint64_t completeBytes(std::uint64_t endMarkBits) {
    return sizeof(TKHeader) + (endMarkBits + kEndPaddingBits + 7) / 8;
}

}  // namespace
}  // namespace qmx

tesk_status tesk_measure(const void* stream, size_t streamBytes, size_t* length) {
    if (length == nullptr) return TESK_INVALID_ARGUMENT;
    *length = 0;
    if (stream == nullptr) return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    const tesk_status status = qmx::readHeader(stream, streamBytes, header);
    if (status != TESK_OK) return status;

    const auto* behindHeader = static_cast<const unsigned char*>(stream) + sizeof header;
    const qmx::WalkEnd found =
        qmx::walkSections(header, {behindHeader, streamBytes - sizeof header});
    if (found.end == qmx::StreamEnd::invalid) return TESK_INVALID_STREAM;
    *length = streamBytes;
    if (found.end == qmx::StreamEnd::cut) return TESK_CUT;
    // Decoders do not miss padding, so it need not be there.
    *length = static_cast<std::size_t>(
        std::min<std::uint64_t>(streamBytes, qmx::completeBytes(found.position)));
    return TESK_OK;
}
