#include "convert/ImageChecks.h"

#include "convert/Refusal.h"

namespace qmx {
namespace {

constexpr std::uint64_t kMostPixelsOfSide = 65535;

std::string sides(std::uint64_t width, std::uint64_t height) {
    return std::to_string(width) + " x " + std::to_string(height) + " pixels";
}

}  // namespace

void requireSides(std::uint64_t width, std::uint64_t height, const ReadOptions& options) {
    if (width == 0 || height == 0) throw Refusal{"has no pixels"};
    if (width > kMostPixelsOfSide || height > kMostPixelsOfSide)
        throw Refusal{"is " + sides(width, height) + "; a stream holds up to 65535 x 65535"};
    if (width == 1 || height == 1)
        throw Refusal{"has a side of 1, which no stream restores: put rows or columns beside it"};
    requirePixelCount(width, height, options);
}

void requirePixelCount(std::uint64_t width, std::uint64_t height, const ReadOptions& options) {
    if (width * height > options.mostPixels)
        throw Refusal{"is " + sides(width, height) + ", more than the " +
                      std::to_string(options.mostPixels) + " of --max-pixels"};
}

void setGeometry(ImageFile& image, std::uint64_t width, std::uint64_t height,
                 unsigned bytesPerPixel, unsigned bitsPerSample) {
    image.geometry.width = static_cast<std::uint32_t>(width);
    image.geometry.height = static_cast<std::uint32_t>(height);
    image.geometry.bytes_per_pixel = bytesPerPixel;
    image.geometry.bits_per_pixel = bitsPerSample;
}

void notePalette(ImageFile& image) {
    image.notes.emplace_back("the palette becomes RGB");
    image.metadata.notKept.push_back({"the numbers of the palette", true, true});
}

void refuseAlpha() {
    throw Refusal{
        "has an alpha channel, which a stream cannot hold; an opaque one is left out with "
        "--opaque"};
}

void refuseDeepColour() {
    throw Refusal{
        "is 16-bit RGB; a stream holds 8-bit RGB or 16-bit gray: convert its three planes "
        "one by one"};
}

void refuseSamples(const std::string& what, const std::string& instead) {
    throw Refusal{"has " + what + "; a stream holds whole numbers of 1 to 16 bits: " + instead};
}

void refusePages(std::uint64_t count, const std::string& instead) {
    throw Refusal{"has " + std::to_string(count) + " pages; a stream holds one image: " + instead};
}

void refuseColours(const std::string& what) {
    throw Refusal{"is " + what + "; a stream holds gray or RGB: convert it to one of them first"};
}

void refuseShortFile(std::uint64_t row, std::uint64_t height) {
    throw Refusal{"ends in row " + std::to_string(row) + " of " + std::to_string(height)};
}

void refuseShortPixels(std::uint64_t presentBytes, std::uint64_t rowBytes, std::uint64_t height) {
    refuseShortFile(presentBytes / rowBytes + 1, height);
}

}  // namespace qmx
