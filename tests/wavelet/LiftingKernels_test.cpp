#include "wavelet/LiftingKernels.h"

#include <memory>

#include "support/ApartRow.h"
#include "support/CpuLevels.h"
#include "support/GuardedBuffer.h"
#include "support/KernelData.h"
#include "wavelet/LiftingRounding.h"

namespace {

using qmx::CpuLevel;
using qmx::LiftingKernels;
using test::Data;
using test::Side;

/// Buffers that a kernel works on.
template <class T>
class Buffers {
public:
    Buffers(std::initializer_list<std::vector<T>> contents, Side side) {
        for (const auto& samples : contents)
            buffers.push_back(std::make_unique<test::GuardedBuffer<T>>(samples, side));
    }
    T* operator[](std::size_t i) const { return buffers[i]->data(); }
    std::vector<std::vector<T>> contents() const {
        std::vector<std::vector<T>> all;
        for (const auto& buffer : buffers)
            all.push_back(buffer->samples());
        return all;
    }

private:
    std::vector<std::unique_ptr<test::GuardedBuffer<T>>> buffers;
};

class LiftingKernelsTest : public test::AtCpuLevel {
protected:
    /// Calls check(kernels, plain kernels, type, data, count, side) for everything that there is.
    template <class Check>
    void forAll(std::size_t leastCount, Check check) {
        for (const Data data : test::kAllData)
            for (std::size_t count = leastCount; count <= test::kLongestRow; ++count)
                for (const Side side : test::kBothSides) {
                    forType<short>(data, count, side, check);
                    forType<int>(data, count, side, check);
                    if (HasFailure()) return;
                }
    }

    template <class T, class Check>
    void forType(Data data, std::size_t count, Side side, Check check) {
        SCOPED_TRACE(testing::Message() << sizeof(T) << " bytes, " << nameOf(data) << ", count "
                                        << count << ", " << nameOf(side));
        const auto samples = [=](std::size_t number, std::size_t size) {
            return test::kernelData<T>(data, size, 1000 * number + count);
        };
        const auto run = [&](CpuLevel level) {
            return check.template operator()<T>(qmx::kernelsAt<qmx::LiftingKernels<T>>(level),
                                                samples, count, side);
        };
        EXPECT_EQ(run(GetParam()), run(CpuLevel::scalar));
    }
};

TEST_P(LiftingKernelsTest, LinesAreFilteredLikeThePlainOnes) {
    forAll(4, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          Side side) {
        const Buffers<T> line({samples(1, count)}, side);
        kernels.filterLine(line[0], count);
        return line.contents();
    });
}

TEST_P(LiftingKernelsTest, LinesAreJoinedLikeThePlainOnes) {
    forAll(0, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          Side side) {
        const Buffers<T> lines(
            {samples(1, count), samples(2, (count + 1) / 2), samples(3, count / 2)}, side);
        kernels.joinLine(lines[0], lines[1], lines[2], count);
        const auto contents = lines.contents();
        return std::pair(contents[0], contents[2]);
    });
}

TEST_P(LiftingKernelsTest, LinesThatWereFilteredComeBack) {
    forAll(4, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count, Side) {
        const std::vector<T> line = samples(1, count);
        std::vector<T> filtered = line;
        kernels.filterLine(filtered.data(), count);
        std::vector<T> apart = test::apartRow(filtered, 1, 1);
        std::vector<T> joined(count);
        kernels.joinLine(joined.data(), apart.data(), apart.data() + (count + 1) / 2, count);
        EXPECT_EQ(joined, line);
        return joined;
    });
}

TEST_P(LiftingKernelsTest, RowsAreFilteredLikeThePlainOnes) {
    forAll(0, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          Side side) {
        const Buffers<T> rows(
            {samples(1, count), samples(2, count), samples(3, count), samples(4, count)}, side);
        kernels.filterRows(rows[0], rows[1], rows[2], rows[3], count);
        return rows.contents();
    });
}

TEST_P(LiftingKernelsTest, RowsAreUnfilteredLikeThePlainOnes) {
    forAll(0, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          Side side) {
        const Buffers<T> rows(
            {samples(1, count), samples(2, count), samples(3, count), samples(4, count)}, side);
        kernels.unfilterRows(rows[0], rows[1], rows[2], rows[3], count);
        return rows.contents();
    });
}

TEST_P(LiftingKernelsTest, RowsAtOddAddressesAreFilteredLikeThePlainOnes) {
    for (std::size_t offset = 1; offset < 4; ++offset) {
        const auto samples = test::kernelData<short>(Data::random, 4 * test::kLongestRow, offset);
        const auto run = [&](CpuLevel level) {
            auto rows = samples;
            short* first = rows.data() + offset;
            const auto& kernels = qmx::kernelsAt<qmx::LiftingKernels<short>>(level);
            kernels.filterRows(first, first + 101, first + 202, first + 303, 100);
            kernels.filterLine(first, 100);
            kernels.unfilterRows(first + 202, first + 101, first, first + 303, 99);
            kernels.joinLine(first + 403, first + 303, first + 101, 77);
            return rows;
        };
        EXPECT_EQ(run(GetParam()), run(CpuLevel::scalar));
    }
}

/// Every pair of 16-bit values would take minutes without vectors: one of them goes through all
/// values, the other one through those around which the rounding changes, and random ones.
TEST_P(LiftingKernelsTest, SumsOfAllShortsAreRoundedInSixteenBits) {
    const auto& kernels = qmx::kernelsAt<qmx::LiftingKernels<short>>(GetParam());
    constexpr std::size_t kShorts = 65536;
    std::vector<short> all(kShorts);
    for (std::size_t i = 0; i < kShorts; ++i)
        all[i] = static_cast<short>(i);
    test::Random random(1);
    std::vector<int> others{-32768, -32767, -32766, -3, -2, -1, 0, 1, 2, 3, 32765, 32766, 32767};
    for (int i = 0; i < 60; ++i)
        others.push_back(static_cast<short>(random.next()));
    for (const int other : others) {
        const std::vector<short> same(kShorts, static_cast<short>(other));
        const std::vector<short> zeros(kShorts, 0);
        // The smooth row takes the quarters, the detail before it the halves.
        auto smooth = zeros;
        auto detail = same;
        kernels.filterRows(smooth.data(), detail.data(), all.data(), zeros.data(), kShorts);
        auto half = zeros;
        auto before = all;
        kernels.filterRows(before.data(), half.data(), zeros.data(), same.data(), kShorts);
        for (std::size_t i = 0; i < kShorts; ++i) {
            const int sum = all[i] + other;
            ASSERT_EQ(smooth[i], static_cast<short>(qmx::quarter(sum))) << all[i] << " " << other;
            ASSERT_EQ(half[i], static_cast<short>(-qmx::half(sum))) << all[i] << " " << other;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, LiftingKernelsTest, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
