#include "cli/RawSurplus.h"

#include <cinttypes>

#include "container/FileIo.h"

namespace qmx {
namespace {

const char* pluralOf(std::uint64_t count) {
    return count == 1 ? "" : "s";
}

}  // namespace

void reportSurplus(std::FILE* raw, const char* name, const RawGeometry& geometry) {
    const auto width = static_cast<std::uint64_t>(geometry.width);
    const auto height = static_cast<std::uint64_t>(geometry.height);
    const auto pixelBytes = static_cast<std::uint64_t>(geometry.bytesPerPixel);
    const std::uint64_t imageBytes = width * height * pixelBytes;
    const std::uint64_t fileBytes = bytesLeft(raw).value_or(0);
    if (fileBytes <= imageBytes) return;
    const std::uint64_t surplus = fileBytes - imageBytes;
    std::fprintf(stderr,
                 "tesk: warning: '%s' has %" PRIu64 " byte%s more than %" PRIu64 " x %" PRIu64
                 " pixels of %" PRIu64 " byte%s\n",
                 name, surplus, pluralOf(surplus), width, height, pixelBytes, pluralOf(pixelBytes));
}

void reportSurplus(std::FILE* raw, const char* name, const TKHeader& header) {
    reportSurplus(
        raw, name,
        RawGeometry{header.bytesPerPixel, header.bitsPerPixel, header.xSize, header.ySize});
}

}  // namespace qmx
