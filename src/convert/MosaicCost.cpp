#include "convert/MosaicCost.h"

#include <algorithm>
#include <cstring>

#include "convert/CTeskCodec.h"

namespace qmx {
namespace {

/// In photographs samples two apart differ more than neighbours. In mosaics they are of one colour.
constexpr std::uint64_t kMosaicNumerator = 5;
constexpr std::uint64_t kMosaicDenominator = 4;
/// Fewer samples prove nothing; more than so many need not be compressed.
constexpr std::uint32_t kLeastSide = 16;
constexpr std::uint32_t kMostSide = 256;
/// What is not worth a note.
constexpr double kLeastBits = 0.2;

/// Returns: the middle of an image, with even sides, from an even row and column.
ImageFile middleOf(const ImageFile& image) {
    ImageFile part;
    part.geometry = image.geometry;
    part.geometry.width = std::min(image.geometry.width, kMostSide) & ~1U;
    part.geometry.height = std::min(image.geometry.height, kMostSide) & ~1U;
    part.buffer = Buffer(part.rawBytes());
    const std::size_t top = (image.geometry.height - part.geometry.height) / 2 & ~1U;
    const std::size_t left = (image.geometry.width - part.geometry.width) / 2 & ~1U;
    for (std::size_t r = 0; r < part.geometry.height; ++r)
        std::memcpy(
            part.pixels() + r * part.rowBytes(),
            image.pixels() + (top + r) * image.rowBytes() + left * image.geometry.bytes_per_pixel,
            part.rowBytes());
    return part;
}

/// Returns: the sum of how much samples differ that are so many rows and columns apart.
std::uint64_t differences(const ImageFile& image, std::size_t rows, std::size_t columns) {
    const std::size_t width = image.geometry.width;
    std::uint64_t sum = 0;
    for (std::size_t r = 0; r + 2 < image.geometry.height; ++r)
        for (std::size_t c = 0; c + 2 < width; ++c) {
            const unsigned sample = image.sample(r * width + c);
            const unsigned other = image.sample((r + rows) * width + c + columns);
            sum += std::max(sample, other) - std::min(sample, other);
        }
    return sum;
}

bool looksLikeMosaic(const ImageFile& image) {
    const auto isClearly = [](std::uint64_t ofNeighbours, std::uint64_t twoApart) {
        return kMosaicDenominator * ofNeighbours > kMosaicNumerator * twoApart;
    };
    return isClearly(differences(image, 0, 1), differences(image, 0, 2)) &&
           isClearly(differences(image, 1, 0), differences(image, 2, 0));
}

ImageFile planesOf(const ImageFile& mosaic) {
    const std::size_t width = mosaic.geometry.width;
    const std::size_t height = mosaic.geometry.height;
    const std::size_t bytes = mosaic.geometry.bytes_per_pixel;
    ImageFile planes;
    planes.geometry = mosaic.geometry;
    planes.geometry.width /= 2;
    planes.geometry.height *= 2;
    planes.buffer = Buffer(planes.rawBytes());
    unsigned char* to = planes.pixels();
    for (std::size_t plane = 0; plane < 4; ++plane)
        for (std::size_t r = plane / 2; r < height; r += 2)
            for (std::size_t c = plane % 2; c < width; c += 2, to += bytes)
                std::memcpy(to, mosaic.pixels() + (r * width + c) * bytes, bytes);
    return planes;
}

double bitsOfSample(const ImageFile& image, CTeskCodec& codec) {
    CTeskCodec::CBlock block;
    codec.compress(image, 0, block);
    const double samples = static_cast<double>(image.geometry.width) * image.geometry.height;
    return 8 * static_cast<double>(block.view().size()) / samples;
}

}  // namespace

std::optional<MosaicCost> costOfMosaic(const ImageFile& image) {
    if (image.isColour() || std::min(image.geometry.width, image.geometry.height) < kLeastSide)
        return std::nullopt;
    const ImageFile part = middleOf(image);
    if (!looksLikeMosaic(part)) return std::nullopt;
    CTeskCodec codec;
    const MosaicCost cost{bitsOfSample(part, codec), bitsOfSample(planesOf(part), codec)};
    if (cost.bitsOfMosaic - cost.bitsOfPlanes < kLeastBits) return std::nullopt;
    return cost;
}

}  // namespace qmx
