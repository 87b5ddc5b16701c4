#include "cli/CompareImages.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

namespace {

using namespace qmx;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
const double kNoNumber = std::numeric_limits<double>::quiet_NaN();

/// Returns: the PSNR for an MSE of 1, which shows the peak alone.
double psnrOfOne(long bitsPerPixel) {
    return errorFigures(1.0, bitsPerPixel).psnr;
}

double decibels(double peak) {
    return 10.0 * std::log10(peak * peak);
}

TEST(CompareImages, RootOfTheErrorIsBesideTheErrorItself) {
    const auto figures = errorFigures(9.0, 8);
    EXPECT_EQ(figures.mse, 9.0);
    EXPECT_EQ(figures.rmse, 3.0);
    EXPECT_NEAR(figures.psnr, 38.588379, 1e-6);
}

TEST(CompareImages, PeakOf8BitsIs255) {
    EXPECT_DOUBLE_EQ(psnrOfOne(8), decibels(255));
}

TEST(CompareImages, PeakOf16BitsIs65535) {
    EXPECT_DOUBLE_EQ(psnrOfOne(16), decibels(65535));
}

TEST(CompareImages, PeakFollowsTheBitsBetween) {
    EXPECT_DOUBLE_EQ(psnrOfOne(1), 0.0);
    EXPECT_DOUBLE_EQ(psnrOfOne(12), decibels(4095));
    EXPECT_DOUBLE_EQ(psnrOfOne(31), decibels(2147483647));
}

TEST(CompareImages, PeakOf32BitsAndMoreIsMinusOne) {  // Quirk 8
    EXPECT_EQ(psnrOfOne(32), 0.0);
    EXPECT_NEAR(errorFigures(9.0, 32).psnr, 10.0 * std::log10(1.0 / 9.0), 1e-12);
    EXPECT_EQ(psnrOfOne(33), 0.0);
    EXPECT_EQ(psnrOfOne(63), 0.0);
}

TEST(CompareImages, BitsCountModulo64) {
    EXPECT_EQ(psnrOfOne(0), -kInfinity);
    EXPECT_EQ(psnrOfOne(64), -kInfinity);
    EXPECT_DOUBLE_EQ(psnrOfOne(72), decibels(255));
    EXPECT_EQ(psnrOfOne(-1), 0.0);
    EXPECT_DOUBLE_EQ(psnrOfOne(-56), decibels(255));
}

TEST(CompareImages, EqualImagesHaveAnInfinitePsnr) {
    for (const long bits : {1L, 8L, 16L, 32L}) {
        const auto figures = errorFigures(0.0, bits);
        EXPECT_EQ(figures.mse, 0.0) << bits;
        EXPECT_EQ(figures.rmse, 0.0) << bits;
        EXPECT_EQ(figures.psnr, kInfinity) << bits;
    }
}

TEST(CompareImages, NoErrorAgainstNoPeakIsNoNumber) {
    EXPECT_TRUE(std::isnan(errorFigures(0.0, 64).psnr));
}

TEST(CompareImages, AnErrorThatIsNoNumberGivesNoNumbers) {
    const auto figures = errorFigures(kNoNumber, 8);
    EXPECT_TRUE(std::isnan(figures.mse));
    EXPECT_TRUE(std::isnan(figures.rmse));
    EXPECT_TRUE(std::isnan(figures.psnr));
}

TEST(CompareImages, AnInfiniteErrorHasThePsnrMinusInfinity) {
    const auto figures = errorFigures(kInfinity, 8);
    EXPECT_EQ(figures.rmse, kInfinity);
    EXPECT_EQ(figures.psnr, -kInfinity);
}

}  // namespace
