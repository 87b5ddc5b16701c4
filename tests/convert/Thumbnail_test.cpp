#include "convert/Thumbnail.h"

#include <gtest/gtest.h>

#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using test::Bytes;

tesk_image geometryOf(std::uint32_t width, std::uint32_t height) {
    return test::makeImage(width, height, 1, 8).geometry;
}

TEST(Thumbnail, IsMadeOfTwiceItsPixelsWhereTheStreamHasThem) {
    EXPECT_EQ(levelsForSide(geometryOf(300, 200), 300), 0U);
    EXPECT_EQ(levelsForSide(geometryOf(300, 200), 76), 0U);
    EXPECT_EQ(levelsForSide(geometryOf(300, 200), 75), 1U);
    EXPECT_EQ(levelsForSide(geometryOf(200, 300), 37), 2U);
    // A stream has five levels at most.
    EXPECT_EQ(levelsForSide(geometryOf(3000, 3000), 1), 5U);
    EXPECT_EQ(levelsForSide(geometryOf(3000, 3000), 65535), 0U);
}

TEST(Thumbnail, OtherDepthsTakeTheWholeRange) {
    ImageFile deep = test::makeImage(2, 2, 2, 12, {0xFF, 0x0F, 0, 0, 0, 8, 1, 0});
    makeThumbnail(deep, 2);
    EXPECT_EQ(deep.geometry.bytes_per_pixel, 1U);
    EXPECT_EQ(deep.geometry.bits_per_pixel, 8U);
    EXPECT_EQ(test::samplesOf(deep), Bytes({255, 0, 128, 0}));
    ImageFile bits = test::makeImage(2, 2, 1, 1, {0, 1, 1, 0});
    makeThumbnail(bits, 2);
    EXPECT_EQ(test::samplesOf(bits), Bytes({0, 255, 255, 0}));
}

TEST(Thumbnail, EveryPixelCountsInOneAverage) {
    ImageFile image = test::makeImage(3, 3, 1, 8, {10, 20, 30, 40, 50, 60, 70, 80, 90});
    makeThumbnail(image, 2);
    EXPECT_EQ(image.geometry.width, 2U);
    EXPECT_EQ(image.geometry.height, 2U);
    EXPECT_EQ(test::samplesOf(image), Bytes({10, 25, 55, 70}));
    ImageFile colour = test::makeImage(2, 2, 3, 8, {0, 10, 20, 2, 12, 22, 4, 14, 24, 6, 16, 26});
    makeThumbnail(colour, 1);
    EXPECT_EQ(test::samplesOf(colour), Bytes({3, 13, 23}));
}

TEST(Thumbnail, TheLongerSideIsTheOneThatWasAskedFor) {
    ImageFile wide = test::makeImage(300, 100, 1, 8);
    makeThumbnail(wide, 128);
    EXPECT_EQ(wide.geometry.width, 128U);
    EXPECT_EQ(wide.geometry.height, 43U);
    ImageFile thin = test::makeImage(2, 300, 3, 8);
    makeThumbnail(thin, 64);
    EXPECT_EQ(thin.geometry.width, 1U);
    EXPECT_EQ(thin.geometry.height, 64U);
    ImageFile small = test::makeImage(30, 20, 1, 8);
    const Bytes before = test::samplesOf(small);
    makeThumbnail(small, 30);
    EXPECT_EQ(test::samplesOf(small), before);
}

}  // namespace
