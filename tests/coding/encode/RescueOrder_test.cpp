// The order in which a rescue tries things, beside a search that tries each of them one by one: what is
// found is the first in this order that fits, so that streams stay the same.

#include <gtest/gtest.h>
#include <map>

#include "coding/syntax/FoldedValue.h"
#include "support/FoundRescue.h"
#include "support/TestImages.h"

namespace {

using namespace qmx;

/// A coarsest order of so many values in sections of so many bits: those of images of sides up to 700.
struct Order {
    std::size_t values;
    std::uint64_t longestBits;
};
constexpr Order kOrders[] = {{8, 15},  {9, 15},   {12, 15},   {16, 31},   {18, 31},   {20, 31},
                             {21, 31}, {93, 127}, {128, 255}, {153, 255}, {380, 511}, {768, 1023}};

/// Tries one after the other, without any short cut. Requires: something fits.
class PlainSearch {
public:
    PlainSearch(const FoldedValues& original, std::uint64_t longestBits,
                const ICoefficientMove& coefficientMove)
        : values(original), longest(longestBits), move(coefficientMove) {
        for (std::size_t i = 0; i < values.size(); ++i)
            if (move.canMove(values[i])) movable.push_back(i);
        closing = ClosingRuns::zerosLeftOut;
        if (fits({})) return;
        for (const ClosingRuns next :
             {ClosingRuns::written, ClosingRuns::zerosLeftOut, ClosingRuns::leftOut}) {
            closing = next;
            if (moveBlock()) return;
        }
        ADD_FAILURE() << "nothing fits";
    }

    FoldedValues candidate;
    ClosingRuns closing;

private:
    /// Distances of the movable values, from the first one on.
    using Distances = std::vector<int>;

    bool moveBlock() {
        const std::size_t all = movable.size();
        if (moveEnd([&](std::size_t count) { return block(all - count, count); })) return true;
        if (moveEnd([&](std::size_t count) { return block(0, count); })) return true;
        for (std::size_t count = 1; count <= all; ++count)
            for (std::size_t first = 0; first + count <= all; ++first)
                if (fits(block(first, count))) return true;
        for (std::size_t count = 2; count <= all && move.maxDistance() == 2; ++count)
            for (std::size_t far = 1; far < count; ++far)
                if (fits(twoGroups(count, far))) return true;
        return false;
    }

    /// At an end, as many as take the excess out for certain, with 2 bits each, or some more.
    template <class BlockOf>
    bool moveEnd(BlockOf blockOf) {
        const std::uint64_t excess = excessBits(values, longest, closing);
        for (std::size_t count = std::max<std::size_t>(1, (excess + 1) / 2);
             count <= movable.size(); ++count)
            if (fits(blockOf(count))) return true;
        return false;
    }

    Distances block(std::size_t first, std::size_t count) const {
        Distances distances(movable.size());
        std::fill_n(distances.begin() + static_cast<std::ptrdiff_t>(first), count, 1);
        return distances;
    }

    /// The last count ones, of these the last far ones twice as far.
    Distances twoGroups(std::size_t count, std::size_t far) const {
        Distances distances = block(movable.size() - count, count);
        std::fill_n(distances.end() - static_cast<std::ptrdiff_t>(far), far, 2);
        return distances;
    }

    bool fits(const Distances& distances) {
        candidate = values;
        for (std::size_t i = 0; i < distances.size(); ++i) {
            if (distances[i] == 0) continue;
            candidate[movable[i]] = move.moved(values[movable[i]], distances[i]);
        }
        return excessBits(candidate, longest, closing) == 0;
    }

    const FoldedValues& values;
    std::uint64_t longest;
    const ICoefficientMove& move;
    std::vector<std::size_t> movable;
};

/// Returns: values most of which are new in one bit plane; the others are anywhere, or most of those behind
/// some place, in shares that differ from call to call.
FoldedValues someValues(std::size_t count, test::Random& random) {
    const bool isTail = random.below(3) == 0;
    const std::size_t firstOther = isTail ? random.below(count) : 0;
    const std::uint64_t zeros = isTail ? random.below(50) : random.below(3) * random.below(25);
    const std::uint64_t others = zeros + (isTail ? 50 : random.below(3) * random.below(25));
    FoldedValues values(count);
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint64_t share = i < firstOther ? 100 : random.below(100);
        auto coefficient = static_cast<std::int64_t>(128 + random.below(128));
        if (share < others) coefficient = static_cast<std::int64_t>(1 + random.below(9000));
        if (share < zeros) coefficient = 0;
        values[i] =
            static_cast<std::uint64_t>(fold(random.below(2) == 0 ? coefficient : -coefficient));
    }
    return values;
}

class RescueOrder : public testing::Test {
protected:
    /// Calls check(values, order, move) for values whose sections are too long.
    template <class Check>
    void forOverlong(int tries, Check check) {
        for (int i = 0; i < tries && !HasFailure(); ++i)
            for (const Order& order : kOrders) {
                // What the larger ones need is simple, and takes long.
                if (order.values > kMostOftenTried && i % kLargeShare != 0) continue;
                const FoldedValues values = someValues(order.values, random);
                if (excessBits(values, order.longestBits, ClosingRuns::written) == 0) continue;
                ++overlong;
                check(values, order, other);
                check(values, order, wraps);
            }
    }

    static constexpr std::size_t kMostOftenTried = 21;
    static constexpr int kLargeShare = 50;

    test::Random random{29};
    COtherRepresentative other;
    CWholeWraps wraps{2};
    int overlong = 0;
};

TEST_F(RescueOrder, TheFirstThatFitsIsFound) {
    std::map<ClosingRuns, int> closings;
    forOverlong(3000, [&](const auto& values, const Order& order, const auto& move) {
        const test::FoundRescue found = test::rescue(values, order.longestBits, move);
        const PlainSearch plain(values, order.longestBits, move);
        EXPECT_EQ(found.values, plain.candidate);
        EXPECT_EQ(found.closing, plain.closing);
        ++closings[found.closing];
    });
    EXPECT_GT(overlong, 1000);
    EXPECT_GT(closings[ClosingRuns::written], 1000);
    EXPECT_GT(closings[ClosingRuns::zerosLeftOut], 100);
    EXPECT_GT(closings[ClosingRuns::leftOut], 1);
}

}  // namespace
