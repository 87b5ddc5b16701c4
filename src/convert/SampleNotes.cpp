#include "convert/SampleNotes.h"

#include <bit>
#include <cstdio>

#include "convert/MosaicCost.h"

namespace qmx {
namespace {

void noteLeftAligned(ImageFile& image, std::uint32_t used) {
    // One bit alone is a picture of two values, not a depth.
    if (used == 0 || std::has_single_bit(used)) return;
    const int zeros = std::countr_zero(used);
    if (zeros == 0) return;
    const std::string count = std::to_string(zeros);
    const std::string which = zeros == 1 ? "the lowest bit of all samples is 0"
                                         : "the low " + count + " bits of all samples are 0";
    image.notes.push_back(which + ": shifted right, the stream would be much shorter, by about " +
                          count + (zeros == 1 ? " bit for each sample" : " bits for each sample"));
}

void noteMosaic(ImageFile& image) {
    const auto cost = costOfMosaic(image);
    if (!cost) return;
    char words[192];
    std::snprintf(words, sizeof words,
                  "looks like a Bayer mosaic: as four planes, one below the other, its middle "
                  "takes %.2f instead "
                  "of %.2f bits for each sample",
                  cost->bitsOfPlanes, cost->bitsOfMosaic);
    image.notes.emplace_back(words);
}

}  // namespace

void addSampleNotes(ImageFile& image, std::uint32_t used) {
    noteLeftAligned(image, used);
    noteMosaic(image);
}

}  // namespace qmx
