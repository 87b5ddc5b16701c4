#include "api/ReducedImage.h"

#include <algorithm>

#include "api/CodecHandle.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {
tesk_status reduceShape(ImageShape& shape, std::uint32_t levels) {
    const int most = std::max(levelCount(shape.width, shape.height), 0);
    if (levels > static_cast<std::uint32_t>(most)) return TESK_UNSUPPORTED_FORMAT;
    shape = shape.reducedBy(static_cast<int>(levels));
    return TESK_OK;
}

}  // namespace qmx

tesk_status tesk_reduced_image(const tesk_image* image, uint32_t levels, tesk_image* reduced) {
    if (image == nullptr || !qmx::isUnderstood(*image)) return TESK_INVALID_ARGUMENT;
    if (reduced == nullptr || !qmx::hasKnownSize(*reduced)) return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    tesk_status status = qmx::checkShape(*image, header);
    if (status != TESK_OK) return status;
    qmx::ImageShape shape = qmx::shapeOf(header);
    status = qmx::reduceShape(shape, levels);
    if (status != TESK_OK) return status;
    // Both may be the same struct.
    reduced->width = static_cast<std::uint32_t>(shape.width);
    reduced->height = static_cast<std::uint32_t>(shape.height);
    reduced->bytes_per_pixel = image->bytes_per_pixel;
    reduced->bits_per_pixel = image->bits_per_pixel;
    return TESK_OK;
}
