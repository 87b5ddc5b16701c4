#include "convert/ConvertOptions.h"

#include <algorithm>

#include "convert/FileFormat.h"

namespace qmx {

std::size_t StreamBudget::bytesFor(const ImageFile& image) const {
    const std::size_t sampleBytes = image.geometry.bytes_per_pixel == 2 ? 2 : 1;
    const std::size_t samples = image.rawBytes() / sampleBytes;
    double wanted = static_cast<double>(bytes);
    if (rate > 0) wanted = rate * static_cast<double>(image.rawBytes());
    if (bitsPerSample > 0) wanted = bitsPerSample * static_cast<double>(samples) / 8;
    // Beyond this no stream is cut.
    const auto most = static_cast<double>(tesk_compress_bound(&image.geometry));
    return static_cast<std::size_t>(std::clamp(wanted, double{kStreamHeadBytes}, most));
}

}  // namespace qmx
