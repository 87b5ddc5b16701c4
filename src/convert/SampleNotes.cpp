#include "convert/SampleNotes.h"

#include <bit>
#include <cmath>
#include <cstdio>

namespace qmx {
namespace {

/// In photographs samples two apart differ more than neighbours. In mosaics they are of one colour.
constexpr double kMosaicRatio = 1.4;
/// Too few samples prove nothing.
constexpr std::uint32_t kLeastMosaicSide = 16;
/// So many rows, spread over the image, are enough.
constexpr std::uint32_t kMostRows = 256;

struct Differences {
    double ofNeighbours = 0;
    double twoApart = 0;

    double ratio() const { return ofNeighbours / twoApart; }
    bool isMosaic() const { return twoApart > 0 && ratio() > kMosaicRatio; }
};

int sampleAt(const ImageFile& image, std::size_t row, std::size_t column) {
    const unsigned char* sample =
        image.pixels() + row * image.rowBytes() + column * image.geometry.bytes_per_pixel;
    return image.geometry.bytes_per_pixel == 1 ? sample[0] : sample[0] + 256 * sample[1];
}

/// Adds up differences across and down.
void addDifferences(const ImageFile& image, std::size_t row, Differences& across,
                    Differences& down) {
    for (std::size_t c = 0; c + 2 < image.geometry.width; ++c) {
        const int sample = sampleAt(image, row, c);
        across.ofNeighbours += std::abs(sampleAt(image, row, c + 1) - sample);
        across.twoApart += std::abs(sampleAt(image, row, c + 2) - sample);
        down.ofNeighbours += std::abs(sampleAt(image, row + 1, c) - sample);
        down.twoApart += std::abs(sampleAt(image, row + 2, c) - sample);
    }
}

void noteLeftAligned(ImageFile& image, std::uint32_t used) {
    const int zeros = used == 0 ? 0 : std::countr_zero(used);
    if (zeros == 0 || std::has_single_bit(used)) return;
    const std::string count = std::to_string(zeros);
    image.notes.push_back((zeros == 1 ? "the lowest bit of all samples is 0"
                                      : "the low " + count + " bits of all samples are 0") +
                          ": shifted right, the stream would be much shorter, by about " + count +
                          (zeros == 1 ? " bit for each sample" : " bits for each sample"));
}

void noteMosaic(ImageFile& image) {
    const std::uint32_t width = image.geometry.width;
    const std::uint32_t height = image.geometry.height;
    if (image.isColour() || width < kLeastMosaicSide || height < kLeastMosaicSide) return;
    Differences across;
    Differences down;
    // The step is odd, so that rows of either colour pair take part.
    const std::uint32_t step = (height / kMostRows) | 1;
    for (std::size_t row = 0; row + 2 < height; row += step)
        addDifferences(image, row, across, down);
    if (!across.isMosaic() || !down.isMosaic()) return;
    // What a sample differs by from what predicts it costs so many bits more.
    const double bits = std::log2(std::sqrt(across.ratio() * down.ratio()));
    char words[160];
    std::snprintf(
        words, sizeof words,
        "this looks like a Bayer mosaic: as four planes, one below the other, the stream would be "
        "shorter by about %.1f bits for each sample",
        bits);
    image.notes.emplace_back(words);
}

}  // namespace

void addSampleNotes(ImageFile& image, std::uint32_t used) {
    noteLeftAligned(image, used);
    noteMosaic(image);
}

}  // namespace qmx
