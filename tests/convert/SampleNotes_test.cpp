#include "convert/SampleNotes.h"

#include <cmath>
#include <gmock/gmock.h>
#include <random>

#include "convert/CTeskCodec.h"
#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

std::vector<std::string> notesOn(ImageFile image) {
    addSampleNotes(image, usedBitsOf(image));
    return image.notes;
}

void setSample(ImageFile& image, std::size_t index, unsigned value) {
    image.pixels()[2 * index] = static_cast<unsigned char>(value);
    image.pixels()[2 * index + 1] = static_cast<unsigned char>(value >> 8);
}

/// A soft picture with some noise of which every second sample of every second row has `gain` times the light.
ImageFile mosaicOf(double gain) {
    constexpr std::size_t kSide = 64;
    ImageFile image = test::makeImage(kSide, kSide, 2, 12);
    std::mt19937 random(1);
    for (std::size_t i = 0; i < kSide * kSide; ++i) {
        const std::size_t r = i / kSide;
        const std::size_t c = i % kSide;
        const double light = 1000 + 300 * std::sin(static_cast<double>(r) / 9) +
                             200 * std::cos(static_cast<double>(c) / 11) +
                             static_cast<double>(random() % 16);
        setSample(image, i, static_cast<unsigned>((r + c) % 2 == 0 ? light : light * gain));
    }
    return image;
}

double bitsOfSample(const ImageFile& image) {
    CTeskCodec codec;
    CTeskCodec::CBlock block;
    codec.compress(image, 0, block);
    return 8 * static_cast<double>(block.view().size()) / (64 * 64);
}

/// The four planes of a mosaic, one below the other.
ImageFile planesOf(const ImageFile& mosaic) {
    const std::size_t side = mosaic.geometry.width;
    ImageFile planes = test::makeImage(static_cast<std::uint32_t>(side / 2),
                                       static_cast<std::uint32_t>(2 * side), 2, 12);
    std::size_t to = 0;
    for (std::size_t plane = 0; plane < 4; ++plane)
        for (std::size_t r = plane / 2; r < side; r += 2)
            for (std::size_t c = plane % 2; c < side; c += 2)
                std::copy_n(mosaic.pixels() + 2 * (r * side + c), 2, planes.pixels() + 2 * to++);
    return planes;
}

TEST(SampleNotes, SamplesThatStandTooFarLeftAreNamedWithTheirCost) {
    ImageFile image = test::makeImage(2, 2, 2, 16);
    for (std::size_t i = 0; i < 4; ++i)
        setSample(image, i, static_cast<unsigned>((i + 5) << 4));
    EXPECT_THAT(
        notesOn(std::move(image)),
        ElementsAre("the low 4 bits of all samples are 0: shifted right, the stream would be much "
                    "shorter, by about 4 bits for each sample"));
    EXPECT_THAT(notesOn(test::makeImage(2, 2, 1, 8, {2, 6, 4, 0})),
                ElementsAre(HasSubstr("the lowest bit")));
}

TEST(SampleNotes, OrdinarySamplesGetNone) {
    EXPECT_THAT(notesOn(test::makeImage(30, 30, 1, 8)), IsEmpty());
    EXPECT_THAT(notesOn(mosaicOf(1)), IsEmpty());
    EXPECT_THAT(notesOn(test::makeImage(2, 2, 1, 8, {0, 0, 0, 0})), IsEmpty());
    EXPECT_THAT(notesOn(test::makeImage(2, 2, 1, 8, {0, 128, 128, 0})), IsEmpty())
        << "two values are no depth";
}

TEST(SampleNotes, AMosaicIsNamedWithWhatItCosts) {
    const ImageFile mosaic = mosaicOf(0.6);
    char expected[160];
    std::snprintf(expected, sizeof expected,
                  "its middle takes %.2f instead of %.2f bits for each sample",
                  bitsOfSample(planesOf(mosaic)), bitsOfSample(mosaic));
    EXPECT_LT(bitsOfSample(planesOf(mosaic)) + 1, bitsOfSample(mosaic));
    EXPECT_THAT(notesOn(mosaicOf(0.6)),
                ElementsAre(AllOf(HasSubstr("looks like a Bayer mosaic"), HasSubstr(expected))));
}

}  // namespace
