#include "wavelet/LevelGeometry.h"

#include <gtest/gtest.h>

namespace {

using qmx::levelCount;
using qmx::LevelGeometry;

TEST(LevelCount, FollowsTheShorterSide) {
    EXPECT_EQ(levelCount(64, 64), 5);
    EXPECT_EQ(levelCount(63, 200), 4);
    EXPECT_EQ(levelCount(20, 1000), 3);
    EXPECT_EQ(levelCount(4, 4), 1);
    EXPECT_EQ(levelCount(7, 7), 1);
    EXPECT_EQ(levelCount(8, 7), 1);
    EXPECT_EQ(levelCount(8, 8), 2);
    EXPECT_EQ(levelCount(65535, 65535), 5);
}

TEST(LevelCount, IsZeroForThinImagesAndMinusOneForASideOfOneOrNone) {
    EXPECT_EQ(levelCount(3, 100), 0);
    EXPECT_EQ(levelCount(100, 2), 0);
    EXPECT_EQ(levelCount(1, 1), -1);
    EXPECT_EQ(levelCount(1, 500), -1);
    EXPECT_EQ(levelCount(0, 500), -1);
    EXPECT_EQ(levelCount(0, 0), -1);
}

TEST(FilteredColumns, WideTallLevelsLeaveOutALastColumnWithoutAWholeStep) {  // Quirk 9
    EXPECT_EQ((LevelGeometry{2001, 1500, 2}.samplesPerRow()), 1001);
    EXPECT_EQ((LevelGeometry{2001, 1500, 2}.filteredColumns()), 1000);
    EXPECT_EQ((LevelGeometry{2000, 1500, 2}.filteredColumns()), 1000);
    EXPECT_EQ((LevelGeometry{2001, 1500, 1}.filteredColumns()), 2001);
    EXPECT_EQ((LevelGeometry{2003, 2500, 4}.filteredColumns()), 500);
}

TEST(FilteredColumns, TheThresholdsAreFiveHundredAndTwelveDistancesAndSamples) {
    EXPECT_EQ((LevelGeometry{2001, 1025, 2}.filteredColumns()), 1000);
    EXPECT_EQ((LevelGeometry{2001, 1024, 2}.filteredColumns()), 1001);
    EXPECT_EQ((LevelGeometry{257, 1025, 2}.filteredColumns()), 128);
    EXPECT_EQ((LevelGeometry{255, 1025, 2}.filteredColumns()), 128);
    EXPECT_EQ((LevelGeometry{249, 1025, 2}.filteredColumns()), 125);
}

TEST(LevelGeometry, EmptySidesHaveNoSamples) {
    EXPECT_EQ((LevelGeometry{0, 7, 1}.samplesPerRow()), 0);
    EXPECT_EQ((LevelGeometry{0, 7, 1}.filteredColumns()), 0);
    EXPECT_EQ((LevelGeometry{7, 0, 1}.samplesPerColumn()), 0);
}

}  // namespace
