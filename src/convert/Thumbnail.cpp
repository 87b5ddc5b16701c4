#include "convert/Thumbnail.h"

#include <algorithm>

namespace qmx {
namespace {

unsigned sampleAt(const ImageFile& image, std::size_t index) {
    const unsigned char* samples = image.pixels();
    return image.geometry.bytes_per_pixel == 2 ? samples[2 * index] + 256U * samples[2 * index + 1]
                                               : samples[index];
}

/// Brings samples to 0 to 255 by the largest value that their bits can have.
void makeBytes(ImageFile& image) {
    const unsigned most = (1U << image.geometry.bits_per_pixel) - 1;
    if (image.isColour() || most == 255) return;
    const std::size_t count = std::size_t{image.geometry.width} * image.geometry.height;
    // A sample is read before the byte that comes to stand in its place.
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sample = std::min(sampleAt(image, i), most);
        image.pixels()[i] = static_cast<unsigned char>((sample * 255 + most / 2) / most);
    }
    image.geometry = eightBitGeometry(image.geometry);
}

unsigned char average(const ImageFile& image, std::size_t top, std::size_t left, std::size_t side,
                      std::size_t channel) {
    const std::size_t bottom = std::min<std::size_t>(top + side, image.geometry.height);
    const std::size_t right = std::min<std::size_t>(left + side, image.geometry.width);
    const std::size_t count = (bottom - top) * (right - left);
    std::size_t sum = count / 2;
    for (std::size_t r = top; r < bottom; ++r)
        for (std::size_t c = left; c < right; ++c)
            sum +=
                image.pixels()[r * image.rowBytes() + c * image.geometry.bytes_per_pixel + channel];
    return static_cast<unsigned char>(sum / count);
}

/// Requires: samples of 8 bits.
void averageSquares(ImageFile& image, std::uint32_t side) {
    ImageFile smaller;
    smaller.geometry = image.geometry;
    smaller.geometry.width = (image.geometry.width + side - 1) / side;
    smaller.geometry.height = (image.geometry.height + side - 1) / side;
    smaller.buffer = Buffer(smaller.rawBytes());
    unsigned char* to = smaller.pixels();
    for (std::size_t r = 0; r < image.geometry.height; r += side)
        for (std::size_t c = 0; c < image.geometry.width; c += side)
            for (std::size_t channel = 0; channel < image.geometry.bytes_per_pixel; ++channel)
                *to++ = average(image, r, c, side, channel);
    image.geometry = smaller.geometry;
    image.buffer = std::move(smaller.buffer);
    image.pixelsAtByte = 0;
}

}  // namespace

std::uint32_t levelsForSide(const tesk_image& whole, std::uint32_t side) {
    std::uint32_t levels = 0;
    tesk_image reduced = whole;
    while (std::max(reduced.width, reduced.height) > side &&
           tesk_reduced_image(&whole, levels + 1, &reduced) == TESK_OK)
        ++levels;
    return levels;
}

tesk_image eightBitGeometry(tesk_image geometry) {
    if (geometry.bytes_per_pixel == 2) geometry.bytes_per_pixel = 1;
    geometry.bits_per_pixel = 8;
    return geometry;
}

void makeThumbnail(ImageFile& image, std::uint32_t side) {
    makeBytes(image);
    const std::uint32_t longer = std::max(image.geometry.width, image.geometry.height);
    if (longer > side) averageSquares(image, (longer + side - 1) / side);
}

}  // namespace qmx
