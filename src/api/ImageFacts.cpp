// The calls of the C interface that tell about an image without compressing it.

#include <limits>

#include "api/CodecHandle.h"
#include "container/IPixelRows.h"
#include "container/StreamBound.h"

namespace qmx {
namespace {

/// Returns: a number as the C interface tells it, 0 where it does not fit.
std::size_t sizeOrZero(std::uint64_t bytes) {
    return bytes <= std::numeric_limits<std::size_t>::max() ? static_cast<std::size_t>(bytes) : 0;
}

}  // namespace
}  // namespace qmx

size_t tesk_compress_bound(const tesk_image* image) {
    if (image == nullptr || !qmx::isUnderstood(*image)) return 0;
    qmx::TKHeader header;
    if (qmx::checkImage(*image, header) != TESK_OK) return 0;
    return qmx::sizeOrZero(qmx::streamBoundBytes(header));
}

size_t tesk_raw_bytes(const tesk_image* image) {
    if (image == nullptr || !qmx::isUnderstood(*image)) return 0;
    qmx::TKHeader header;
    if (qmx::checkShape(*image, header) != TESK_OK) return 0;
    return qmx::sizeOrZero(header.rawBytes());
}

tesk_status tesk_used_bits(const tesk_image* image, const void* pixels, size_t rowStrideBytes,
                           uint32_t* used) {
    if (used == nullptr) return TESK_INVALID_ARGUMENT;
    *used = 0;
    if (image == nullptr || !qmx::isUnderstood(*image)) return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    if (const tesk_status status = qmx::checkShape(*image, header); status != TESK_OK)
        return status;
    const std::size_t stride = qmx::strideOrDefault(rowStrideBytes, header);
    const bool hasPixels = pixels != nullptr || header.rawBytes() == 0;
    if (stride == 0 || !hasPixels) return TESK_INVALID_ARGUMENT;
    *used = qmx::CPixelsInMemory(pixels, stride).usedBits(header, qmx::kNeverStopped);
    return TESK_OK;
}
