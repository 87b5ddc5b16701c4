#include "coding/syntax/FoldedValue.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

TEST(FoldedValue, SignIsBitZeroAndMagnitudeAboveIt) {
    EXPECT_EQ(qmx::fold<short>(0), 0);
    EXPECT_EQ(qmx::fold<short>(1), 2);
    EXPECT_EQ(qmx::fold<short>(-1), 3);
    EXPECT_EQ(qmx::fold<short>(-300), 601);
    EXPECT_EQ(qmx::fold<int>(70000), 140000);
    EXPECT_EQ(qmx::fold<int>(-70000), 140001);
}

TEST(FoldedValue, EveryShortFoldsLikeItsFormulaWrapped) {
    for (int x = -32768; x <= 32767; ++x) {
        const auto expected = static_cast<short>(x >= 0 ? 2 * x : 1 - 2 * x);
        ASSERT_EQ(qmx::fold(static_cast<short>(x)), expected) << x;
    }
}

TEST(FoldedValue, UnfoldUndoesFoldWhereNothingWrapped) {
    for (int x = -16383; x <= 16383; ++x) {
        const auto folded = static_cast<std::uint64_t>(qmx::fold(static_cast<short>(x)));
        ASSERT_EQ(qmx::unfold<short>(folded), x);
    }
    EXPECT_EQ(qmx::fold(std::numeric_limits<int>::min()), 1);
}

TEST(FoldedValue, UnfoldNarrowsFromSixtyFourBits) {
    EXPECT_EQ(qmx::unfold<int>((std::uint64_t{1} << 33) | 2), 1);
    EXPECT_EQ(qmx::unfold<short>(std::uint64_t{3} << 16), -32768);
    EXPECT_EQ(qmx::unfold<short>(std::uint64_t{2} << 16), 0);
}

TEST(TopPlane, IsTheHighestMagnitudeBit) {
    EXPECT_EQ(qmx::topPlaneOf<short>(0), 0);
    EXPECT_EQ(qmx::topPlaneOf<short>(2), 0);
    EXPECT_EQ(qmx::topPlaneOf<short>(3), 0);
    EXPECT_EQ(qmx::topPlaneOf<short>(4), 1);
    EXPECT_EQ(qmx::topPlaneOf<short>(510), 7);
    EXPECT_EQ(qmx::topPlaneOf<short>(32767), 13);
    EXPECT_EQ(qmx::topPlaneOf<int>(std::numeric_limits<int>::max()), 29);
}

TEST(TopPlane, IsSixtyOneWhenAFoldedValueWrapped) {
    EXPECT_EQ(qmx::topPlaneOf<short>(-32768), 61);
    EXPECT_EQ(qmx::topPlaneOf<short>(-1), 61);
    EXPECT_EQ(qmx::topPlaneOf<int>(std::numeric_limits<int>::min()), 61);
}

}  // namespace
