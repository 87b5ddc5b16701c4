#include "wavelet/LiftingKernels.h"

#include <limits>
#include <memory>

#include "support/CpuLevels.h"
#include "support/GuardedBuffer.h"
#include "support/TestImages.h"
#include "wavelet/LiftingRounding.h"

namespace {

using qmx::CpuLevel;
using qmx::LiftingKernels;

/// More than three vectors of the widest level, and their rest.
constexpr std::size_t kMostSamples = 3 * 32 + 37;

enum class Data { random, extreme, small, constant };
constexpr Data kAllData[] = {Data::random, Data::extreme, Data::small, Data::constant};

template <class T>
std::vector<T> makeSamples(Data data, std::size_t count, std::uint64_t seed) {
    test::Random random(seed);
    std::vector<T> samples(count);
    for (T& sample : samples) {
        const auto any = static_cast<T>(random.next());
        const T most = std::numeric_limits<T>::max();
        const T least = std::numeric_limits<T>::min();
        sample = data == Data::extreme    ? (random.below(2) != 0 ? most : least)
                 : data == Data::small    ? static_cast<T>(static_cast<int>(random.below(7)) - 3)
                 : data == Data::constant ? static_cast<T>(seed)
                                          : any;
    }
    return samples;
}

/// Buffers that a kernel works on, each against a forbidden page at the given side.
template <class T>
class Buffers {
public:
    Buffers(std::initializer_list<std::vector<T>> contents, int side) {
        for (const auto& samples : contents)
            buffers.push_back(std::make_unique<test::GuardedBuffer<T>>(
                samples, side == 0 ? test::GuardedBuffer<T>::Side::atEnd
                                   : test::GuardedBuffer<T>::Side::atStart));
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
        for (const Data data : kAllData)
            for (std::size_t count = leastCount; count <= kMostSamples; ++count)
                for (const int side : {0, 1}) {
                    forType<short>(data, count, side, check);
                    forType<int>(data, count, side, check);
                    if (HasFailure()) return;
                }
    }

    template <class T, class Check>
    void forType(Data data, std::size_t count, int side, Check check) {
        SCOPED_TRACE(testing::Message() << sizeof(T) << " bytes, data " << static_cast<int>(data)
                                        << ", count " << count << ", side " << side);
        const auto samples = [=](std::size_t number, std::size_t size) {
            return makeSamples<T>(data, size, 1000 * number + count);
        };
        const auto run = [&](CpuLevel level) {
            return check.template operator()<T>(qmx::liftingKernels<T>(level), samples, count,
                                                side);
        };
        EXPECT_EQ(run(GetParam()), run(CpuLevel::scalar));
    }
};

TEST_P(LiftingKernelsTest, LinesAreFilteredLikeThePlainOnes) {
    forAll(4, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> line({samples(1, count)}, side);
        kernels.filterLine(line[0], count);
        return line.contents();
    });
}

TEST_P(LiftingKernelsTest, LinesAreUnfilteredLikeThePlainOnes) {
    forAll(4, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> line({samples(1, count)}, side);
        kernels.unfilterLine(line[0], count);
        return line.contents();
    });
}

TEST_P(LiftingKernelsTest, RowsAreFilteredLikeThePlainOnes) {
    forAll(0, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> rows(
            {samples(1, count), samples(2, count), samples(3, count), samples(4, count)}, side);
        kernels.filterRows(rows[0], rows[1], rows[2], rows[3], count);
        return rows.contents();
    });
}

TEST_P(LiftingKernelsTest, RowsAreUnfilteredLikeThePlainOnes) {
    forAll(0, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> rows(
            {samples(1, count), samples(2, count), samples(3, count), samples(4, count)}, side);
        kernels.unfilterRows(rows[0], rows[1], rows[2], rows[3], count);
        return rows.contents();
    });
}

TEST_P(LiftingKernelsTest, EvensAreTakenLikeThePlainOnes) {
    forAll(1, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> lines({samples(1, count), samples(2, 2 * count - 1)}, side);
        kernels.takeEvens(lines[0], lines[1], count);
        return lines.contents();
    });
}

TEST_P(LiftingKernelsTest, EvensArePutLikeThePlainOnes) {
    forAll(1, []<class T>(const LiftingKernels<T>& kernels, auto samples, std::size_t count,
                          int side) {
        const Buffers<T> lines({samples(1, 2 * count - 1), samples(2, count)}, side);
        kernels.putEvens(lines[0], lines[1], count);
        return lines.contents();
    });
}

TEST_P(LiftingKernelsTest, RowsAtOddAddressesAreFilteredLikeThePlainOnes) {
    for (std::size_t offset = 1; offset < 4; ++offset) {
        const auto samples = makeSamples<short>(Data::random, 4 * kMostSamples, offset);
        const auto run = [&](CpuLevel level) {
            auto rows = samples;
            short* first = rows.data() + offset;
            const auto& kernels = qmx::liftingKernels<short>(level);
            kernels.filterRows(first, first + 101, first + 202, first + 303, 100);
            kernels.filterLine(first, 100);
            kernels.unfilterRows(first + 202, first + 101, first, first + 303, 99);
            kernels.unfilterLine(first + 303, 77);
            return rows;
        };
        EXPECT_EQ(run(GetParam()), run(CpuLevel::scalar));
    }
}

/// Every pair of 16-bit values would take minutes without vectors: one of them goes through all
/// values, the other one through those around which the rounding changes, and random ones.
TEST_P(LiftingKernelsTest, SumsOfAllShortsAreRoundedInSixteenBits) {
    const auto& kernels = qmx::liftingKernels<short>(GetParam());
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
