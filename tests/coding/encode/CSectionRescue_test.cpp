#include "coding/encode/CSectionRescue.h"

#include <gtest/gtest.h>

#include "coding/syntax/FoldedValue.h"
#include "support/FoundRescue.h"
#include "support/TestImages.h"

namespace {

using namespace qmx;
using test::FoundRescue;
using test::rescue;

std::uint64_t folded(int coefficient) {
    return static_cast<std::uint64_t>(fold(std::int64_t{coefficient}));
}

TEST(COtherRepresentative, IsTheSameCoefficientModulo65536) {
    const COtherRepresentative move;
    for (int coefficient = -16383; coefficient <= 16383; ++coefficient) {
        const std::uint64_t value = folded(coefficient);
        EXPECT_EQ(move.canMove(value), coefficient != 0);
        if (coefficient == 0) continue;
        const std::uint64_t moved = move.moved(value, 1);
        EXPECT_EQ(unfold<short>(moved), coefficient);
        EXPECT_EQ(bitLength(moved >> 1), 16) << "new in plane 15";
    }
}

TEST(CWholeWraps, AddMultiplesOf65536ForEachSample) {
    const CWholeWraps move(2);
    for (const int coefficient : {-70000, -1, 0, 1, 65535}) {
        EXPECT_TRUE(move.canMove(folded(coefficient)));
        EXPECT_EQ(unfold<int>(move.moved(folded(coefficient), 1)), coefficient + (1 << 20));
        EXPECT_EQ(unfold<int>(move.moved(folded(coefficient), 2)), coefficient + (1 << 21));
    }
}

TEST(CSectionRescue, LeavesOutALastRunOf0WhereThatIsEnough) {
    const FoldedValues values(8, folded(200));
    const FoundRescue found = rescue(values, 16, COtherRepresentative());
    ASSERT_TRUE(found.isFound);
    EXPECT_EQ(found.values, values);
    EXPECT_EQ(found.closing, ClosingRuns::zerosLeftOut);
}

TEST(CSectionRescue, MovesTheLastCoefficientsFirst) {
    const FoldedValues values(9, folded(-200));
    const FoundRescue found = rescue(values, 15, COtherRepresentative());
    ASSERT_TRUE(found.isFound);
    EXPECT_EQ(found.closing, ClosingRuns::written);
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_EQ(found.values[i] == values[i], i < 7) << i;
}

TEST(CSectionRescue, GoesOnWhenValuesAreNotAccepted) {
    const FoldedValues values(9, folded(200));
    const COtherRepresentative move;
    int offers = 0;
    EXPECT_FALSE(
        CSectionRescue(values, 15, move).search([&](const FoldedValues& moved, ClosingRuns) {
            EXPECT_EQ(moved.size(), values.size());
            ++offers;
            return false;
        }));
    EXPECT_GT(offers, 10);
}

TEST(CSectionRescue, GivesUpWhereNoMoveIsEnough) {
    EXPECT_FALSE(rescue(FoldedValues(9, folded(200)), 3, COtherRepresentative()).isFound);
    EXPECT_FALSE(rescue(FoldedValues(9, folded(200)), 3, CWholeWraps(2)).isFound);
}

/// Orders of 12 coefficients in sections of 15 bits have the least room.
TEST(CSectionRescue, FindsRoomForEveryPatternOf12Coefficients) {
    constexpr std::uint64_t kLongest = 15;
    constexpr int kChoices[] = {0, 0, 1, 100, 200, 255, -200};
    const COtherRepresentative other;
    const CWholeWraps wraps(2);
    const ICoefficientMove* moves[] = {&other, &wraps};
    test::Random random(11);
    int rescued = 0;
    int leftOut = 0;
    for (int i = 0; i < 20000; ++i) {
        FoldedValues values(12);
        for (std::uint64_t& value : values)
            value = folded(kChoices[random.below(std::size(kChoices))]);
        if (excessBits(values, kLongest, ClosingRuns::written) == 0) continue;
        ++rescued;
        for (const ICoefficientMove* move : moves) {
            const FoundRescue found = rescue(values, kLongest, *move);
            ASSERT_TRUE(found.isFound);
            EXPECT_EQ(excessBits(found.values, kLongest, found.closing), 0U);
            leftOut += found.closing == ClosingRuns::leftOut ? 1 : 0;
        }
    }
    EXPECT_GT(rescued, 1000);
    EXPECT_GT(leftOut, 0) << "no pattern needed a last run left out that is not 0";
}

}  // namespace
