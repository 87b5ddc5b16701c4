#include "convert/Thumbnail.h"

#include <algorithm>
#include <cassert>

namespace qmx {
namespace {

/// Brings samples to 0 to 255 by the largest value that their bits can have.
void makeBytes(ImageFile& image) {
    const unsigned most = (1U << image.geometry.bits_per_pixel) - 1;
    if (image.isColour() || most == 255) return;
    const std::size_t count = std::size_t{image.geometry.width} * image.geometry.height;
    // A sample is read before the byte that comes to stand in its place.
    for (std::size_t i = 0; i < count; ++i) {
        const unsigned sample = std::min(image.sample(i), most);
        image.pixels()[i] = static_cast<unsigned char>((sample * 255 + most / 2) / most);
    }
    image.geometry = eightBitGeometry(image.geometry);
}

/// A part of an image, from top and left to before bottom and right, of one pixel at least.
struct Block {
    std::size_t top;
    std::size_t left;
    std::size_t bottom;
    std::size_t right;
};

unsigned char average(const ImageFile& image, const Block& block, std::size_t channel) {
    const std::size_t count = (block.bottom - block.top) * (block.right - block.left);
    assert(count != 0);
    std::size_t sum = count / 2;
    for (std::size_t r = block.top; r < block.bottom; ++r)
        for (std::size_t c = block.left; c < block.right; ++c)
            sum +=
                image.pixels()[r * image.rowBytes() + c * image.geometry.bytes_per_pixel + channel];
    return static_cast<unsigned char>(sum / count);
}

/// Requires: samples of 8 bits; no side of the geometry is longer than that of the image.
void averageBlocks(ImageFile& image, const tesk_image& geometry) {
    ImageFile smaller;
    smaller.geometry = geometry;
    smaller.buffer = Buffer(smaller.rawBytes());
    unsigned char* to = smaller.pixels();
    // Every pixel of the image is in one block: block i of n begins at i/n of the side.
    const auto edge = [](std::size_t i, std::size_t count, std::size_t side) {
        return i * side / count;
    };
    for (std::size_t r = 0; r < geometry.height; ++r)
        for (std::size_t c = 0; c < geometry.width; ++c) {
            const Block block{edge(r, geometry.height, image.geometry.height),
                              edge(c, geometry.width, image.geometry.width),
                              edge(r + 1, geometry.height, image.geometry.height),
                              edge(c + 1, geometry.width, image.geometry.width)};
            for (std::size_t channel = 0; channel < geometry.bytes_per_pixel; ++channel)
                *to++ = average(image, block, channel);
        }
    image.geometry = geometry;
    image.buffer = std::move(smaller.buffer);
    image.pixelsAtByte = 0;
}

/// Returns: a side of the image that has the same share of the longer one afterwards, and at least a pixel.
std::uint32_t scaled(std::uint32_t own, std::uint32_t longer, std::uint32_t side) {
    return std::max<std::uint32_t>(
        static_cast<std::uint32_t>((std::uint64_t{own} * side + longer / 2) / longer), 1);
}

}  // namespace

std::uint32_t levelsForSide(const tesk_image& whole, std::uint32_t side) {
    std::uint32_t levels = 0;
    tesk_image reduced = whole;
    while (tesk_reduced_image(&whole, levels + 1, &reduced) == TESK_OK &&
           std::max(reduced.width, reduced.height) >= 2 * side)
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
    if (longer <= side) return;
    tesk_image geometry = image.geometry;
    geometry.width = scaled(image.geometry.width, longer, side);
    geometry.height = scaled(image.geometry.height, longer, side);
    averageBlocks(image, geometry);
}

}  // namespace qmx
