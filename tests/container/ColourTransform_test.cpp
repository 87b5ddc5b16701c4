#include "container/ColourTransform.h"

#include <gtest/gtest.h>

#include "support/Planes.h"

namespace {

using qmx::CImageData;
using test::samplesOf;

TEST(ColourTransform, PutsLumaIntoPlaneZero) {
    CImageData<short> image(2, 1, 3);
    test::setSamples<short>(image, {255, 1, 0, 0, 255, 0});
    qmx::transformColours(image);
    EXPECT_EQ(samplesOf(image), (std::vector<short>{127, 0, 255, 1, 255, 0}));
}

TEST(ColourTransform, RestoresEveryPixel) {
    for (const auto& [width, height] : {std::pair{1, 7}, {7, 1}, {64, 33}, {9, 0}, {0, 9}}) {
        CImageData<short> image(width, height, 3);
        test::fillRandom(image, 255, 7);
        const auto before = samplesOf(image);
        qmx::transformColours(image);
        qmx::untransformColours(image);
        EXPECT_EQ(samplesOf(image), before);
    }
}

TEST(ColourTransform, WrapsInsteadOfOverflowing) {
    CImageData<short> image(1, 1, 3);
    const std::vector<short> extremes{-32768, 32767, -32768};
    test::setSamples(image, extremes);
    qmx::transformColours(image);
    EXPECT_EQ(samplesOf(image), (std::vector<short>{-1, 1, 1}));
}

TEST(ColourTransform, LeavesImagesWithoutThreePlanesAlone) {
    CImageData<short> image(4, 4, 1);
    test::fillRandom(image, 255, 7);
    const auto before = samplesOf(image);
    qmx::transformColours(image);
    qmx::untransformColours(image);
    EXPECT_EQ(samplesOf(image), before);
}

TEST(ColourTransform, LeavesThePaddingAlone) {
    CImageData<short> image(1, 1, 3);
    for (int p = 0; p < 3; ++p)
        for (int c = 0; c < 8; ++c)
            image.row(p, 0)[c] = 50;
    qmx::transformColours(image);
    EXPECT_EQ(image.row(1, 0)[0], 0);
    EXPECT_EQ(image.row(1, 0)[1], 50);
}

}  // namespace
