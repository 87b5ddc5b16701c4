#include "coding/encode/FoldKernels.h"

#include "coding/syntax/FoldedValue.h"
#include "support/CpuLevels.h"
#include "support/GuardedBuffer.h"
#include "support/KernelData.h"

namespace {

using namespace qmx;
using test::Data;
using test::Side;

/// Among random values those around which folding overflows.
template <class T>
std::vector<T> rowOf(Data data, std::size_t count, std::uint64_t seed) {
    using Limits = std::numeric_limits<T>;
    std::vector<T> row = test::kernelData<T>(data, count, seed);
    if (data != Data::random) return row;
    test::Random random(seed);
    const T edges[] = {T{0}, static_cast<T>(Limits::max() / 2 + 1),
                       static_cast<T>(Limits::max() / 2)};
    for (T& value : row)
        if (random.below(4) == 0) value = edges[random.below(std::size(edges))];
    return row;
}

class FoldKernelsAt : public test::AtCpuLevel {
protected:
    /// Calls check(row, side) for rows of 0, step, 2 step, .. values of both types.
    template <class Check>
    void forAll(std::size_t step, Check check) {
        for (const Data data : test::kAllData)
            for (std::size_t count = 0; count <= step * test::kLongestRow; count += step)
                for (const Side side : test::kBothSides) {
                    SCOPED_TRACE(testing::Message()
                                 << nameOf(data) << ", count " << count << ", " << nameOf(side));
                    check(rowOf<short>(data, count, count), side);
                    check(rowOf<int>(data, count, count), side);
                    if (HasFatalFailure()) return;
                }
    }
};

template <class T>
void expectFolds(const std::vector<T>& row, Side side) {
    std::vector<T> expected;
    FoldedUnion<T> expectedAll{T{1}, 5};
    for (const T value : row) {
        const T folded = qmx::fold(value);
        expected.push_back(folded);
        expectedAll.bits = static_cast<T>(expectedAll.bits | folded);
        if (folded < 2 && value != 0) ++expectedAll.lost;
    }
    const test::GuardedBuffer<T> from(row, side);
    const test::GuardedBuffer<T> to(row, side);
    // In place first, then from elsewhere.
    for (const T* source : {to.data(), from.data()}) {
        FoldedUnion<T> all{T{1}, 5};
        kernelsAt<FoldKernels<T>>(activeCpuLevel()).fold(source, row.size(), to.data(), all);
        ASSERT_EQ(to.samples(), expected);
        ASSERT_EQ(all.bits, expectedAll.bits);
        ASSERT_EQ(all.lost, expectedAll.lost);
        std::fill_n(to.data(), row.size(), T{77});
    }
}

TEST_P(FoldKernelsAt, FoldRowsOfEveryLengthAlsoInPlace) {
    forAll(1, [](const auto& row, Side side) { expectFolds(row, side); });
}

template <class T>
void expectSplits(const std::vector<T>& row, Side side) {
    const std::size_t pairs = row.size() / 2;
    std::vector<T> evens;
    std::vector<T> odds;
    for (std::size_t i = 0; i < row.size(); i += 2) {
        evens.push_back(row[i]);
        odds.push_back(row[i + 1]);
    }
    const std::vector<T> others(pairs, T{77});
    const auto split = kernelsAt<FoldKernels<T>>(activeCpuLevel()).split;
    const test::GuardedBuffer<T> from(row, side);
    const test::GuardedBuffer<T> even(others, side);
    const test::GuardedBuffer<T> odd(others, side);
    split(from.data(), pairs, even.data(), odd.data());
    ASSERT_EQ(even.samples(), evens);
    ASSERT_EQ(odd.samples(), odds);
    ASSERT_EQ(from.samples(), row);

    const test::GuardedBuffer<T> oddOfInPlace(others, side);
    split(from.data(), pairs, from.data(), oddOfInPlace.data());
    ASSERT_EQ(oddOfInPlace.samples(), odds);
    ASSERT_TRUE(std::equal(evens.begin(), evens.end(), from.data()));
}

TEST_P(FoldKernelsAt, SplitRowsOfEveryLengthAlsoInPlace) {
    forAll(2, [](const auto& row, Side side) { expectSplits(row, side); });
}

INSTANTIATE_TEST_SUITE_P(Levels, FoldKernelsAt, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
