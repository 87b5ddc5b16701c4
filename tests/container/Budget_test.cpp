#include "container/Budget.h"

#include <cmath>
#include <gtest/gtest.h>
#include <limits>

#include "support/LibraryCodec.h"

namespace {

using namespace qmx;

constexpr std::uint64_t kTwoTo63 = std::uint64_t{1} << 63;

TEST(TruncateToUnsigned, DropsTheFraction) {
    EXPECT_EQ(truncateToUnsigned(0.0), 0U);
    EXPECT_EQ(truncateToUnsigned(6553.99), 6553U);
    EXPECT_EQ(truncateToUnsigned(-0.9), 0U);
}

TEST(TruncateToUnsigned, NegativeNumbersWrap) {
    EXPECT_EQ(truncateToUnsigned(-1.5), ~std::uint64_t{0});
    EXPECT_EQ(truncateToUnsigned(-4096.0), std::uint64_t{0} - 4096);
}

TEST(TruncateToUnsigned, LargeNumbersAreExactAndHugeOnesExceedEveryStream) {
    EXPECT_EQ(truncateToUnsigned(9223372036854775808.0), kTwoTo63);
    EXPECT_EQ(truncateToUnsigned(9223372036854777856.0), kTwoTo63 + 2048);
    EXPECT_EQ(truncateToUnsigned(18446744073709549568.0), 0U - std::uint64_t{2048});
    for (const double value :
         {1e300, -1e300, 18446744073709551616.0, std::numeric_limits<double>::infinity(),
          -std::numeric_limits<double>::infinity(), std::nan("")})
        EXPECT_GE(truncateToUnsigned(value), kTwoTo63) << value;
}

TEST(StreamBudget, IsTheRateTimesTheRawSizeWithoutTheHeader) {
    const TKHeader header = makeHeader(1, 8, 256, 256);
    EXPECT_EQ(streamBudgetBytes(header, 0.0), 98288U);
    EXPECT_EQ(streamBudgetBytes(header, 0.1), 6537U);
    EXPECT_EQ(streamBudgetBytes(makeHeader(3, 8, 256, 256), 0.1), 19660U - 16);
}

TEST(StreamBudget, IsNeverNegative) {
    const TKHeader header = makeHeader(1, 8, 10, 10);
    EXPECT_EQ(streamBudgetBytes(header, 0.0001), 0U);
    EXPECT_EQ(streamBudgetBytes(header, 0.16), 0U);
    EXPECT_EQ(streamBudgetBytes(header, 0.17), 1U);
}

TEST(StreamBudget, OfARawSizeThatWrapsBelowZeroIsHuge) {  // Quirk 6
    const TKHeader header = makeHeader(1, 8, 65535, 65535);
    EXPECT_GT(streamBudgetBytes(header, 0.0), kTwoTo63);
    EXPECT_EQ(streamBudgetBytes(makeHeader(2, 8, 46341, 46341), 1.0), 9266U - 16);
}

TEST(CompleteStreamBound, HoldsTheStreamsOfNoiseOfEverySize) {
    for (int side = 1; side < 60; ++side) {
        for (const auto& [bytes, bits] : {std::pair{1, 8}, {3, 8}, {2, 12}, {2, 16}}) {
            const auto noise = test::makeImage(test::Content::noise, bytes, bits, side, side);
            const std::uint64_t bound =
                completeStreamBoundBytes(test::headerOf(noise), bits > 12 ? 32 : 16);
            EXPECT_LT(test::encode(noise).size(), bound);
        }
    }
}

}  // namespace
