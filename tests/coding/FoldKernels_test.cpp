#include "coding/FoldKernels.h"

#include <limits>

#include "coding/FoldedValue.h"
#include "support/CpuLevels.h"
#include "support/TestImages.h"

namespace {

using namespace qmx;

using FoldKernelsAt = test::AtCpuLevel;

/// Elements on either side of a row, which have to stay as they are.
constexpr std::size_t kMargin = 3;
constexpr std::size_t kLongest = 150;

template <class T>
std::vector<T> anyRow(std::size_t count, std::uint64_t seed) {
    using Limits = std::numeric_limits<T>;
    test::Random random(seed);
    std::vector<T> row(count + 2 * kMargin);
    for (T& value : row) {
        const T extremes[] = {Limits::min(), Limits::max(), T{0},
                              static_cast<T>(Limits::max() / 2 + 1),
                              static_cast<T>(Limits::max() / 2)};
        value = random.below(4) == 0 ? extremes[random.below(std::size(extremes))]
                                     : static_cast<T>(random.next());
        if (seed % 2 == 0) value = static_cast<T>(value % 100);
    }
    return row;
}

template <class T>
void expectFolds(std::size_t count) {
    const std::vector<T> row = anyRow<T>(count, count);
    std::vector<T> expected = row;
    FoldedUnion<T> all{T{1}, 5};
    FoldedUnion<T> expectedAll = all;
    for (std::size_t i = kMargin; i < kMargin + count; ++i) {
        expected[i] = qmx::fold(row[i]);
        expectedAll.bits = static_cast<T>(expectedAll.bits | expected[i]);
        if (expected[i] < 2 && row[i] != 0) ++expectedAll.lost;
    }
    std::vector<T> actual = row;
    const auto fold = foldKernels<T>(activeCpuLevel()).fold;
    fold(actual.data() + kMargin, count, actual.data() + kMargin, all);
    ASSERT_EQ(actual, expected) << count;
    std::vector<T> elsewhere = row;
    FoldedUnion<T> again;
    fold(row.data() + kMargin, count, elsewhere.data() + kMargin, again);
    ASSERT_EQ(elsewhere, expected) << count;
    ASSERT_EQ(all.bits, expectedAll.bits) << count;
    ASSERT_EQ(all.lost, expectedAll.lost) << count;
}

TEST_P(FoldKernelsAt, FoldRowsOfEveryLength) {
    for (std::size_t count = 0; count <= kLongest; ++count) {
        expectFolds<short>(count);
        expectFolds<int>(count);
    }
}

template <class T>
void expectSplits(std::size_t pairs) {
    const std::vector<T> row = anyRow<T>(2 * pairs, pairs);
    std::vector<T> even(pairs + 1, T{77});
    std::vector<T> odd(pairs + 1, T{77});
    std::vector<T> inPlace(row.begin() + kMargin, row.end());
    std::vector<T> oddOfInPlace = odd;
    const auto split = foldKernels<T>(activeCpuLevel()).split;
    split(row.data() + kMargin, pairs, even.data(), odd.data());
    split(inPlace.data(), pairs, inPlace.data(), oddOfInPlace.data());
    for (std::size_t i = 0; i < pairs; ++i) {
        ASSERT_EQ(even[i], row[kMargin + 2 * i]) << pairs;
        ASSERT_EQ(odd[i], row[kMargin + 2 * i + 1]) << pairs;
        ASSERT_EQ(inPlace[i], even[i]) << pairs;
    }
    ASSERT_EQ(even[pairs], 77);
    ASSERT_EQ(odd[pairs], 77);
    ASSERT_EQ(oddOfInPlace, odd);
}

TEST_P(FoldKernelsAt, SplitRowsOfEveryLengthAlsoInPlace) {
    for (std::size_t pairs = 0; pairs <= kLongest; ++pairs) {
        expectSplits<short>(pairs);
        expectSplits<int>(pairs);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, FoldKernelsAt, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
