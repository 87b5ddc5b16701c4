#include "wavelet/LiftingRounding.h"

#include <gtest/gtest.h>
#include <limits>

namespace {

using qmx::half;
using qmx::quarter;

TEST(LiftingRounding, RoundsToNearestTiesAwayFromZero) {
    for (int s = -40; s <= 40; ++s) {
        const int size = s < 0 ? -s : s;
        const int sign = s < 0 ? -1 : 1;
        EXPECT_EQ(half(s), sign * ((size + 1) / 2)) << s;
        EXPECT_EQ(quarter(s), sign * ((size + 2) / 4)) << s;
    }
}

TEST(LiftingRounding, SumsWrapAtThirtyTwoBits) {
    constexpr int kMost = std::numeric_limits<int>::max();
    EXPECT_EQ(half(kMost), -(1 << 30));
    EXPECT_EQ(quarter(kMost), -(1 << 29));
    EXPECT_EQ(half(-kMost - 1), -(1 << 30));
    EXPECT_EQ(qmx::wrappingSum(kMost, 1), -kMost - 1);
}

}  // namespace
