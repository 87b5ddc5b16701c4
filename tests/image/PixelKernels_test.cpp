#include "image/PixelKernels.h"

#include <memory>

#include "support/CpuLevels.h"
#include "support/GuardedBuffer.h"
#include "support/KernelData.h"

namespace {

using qmx::CpuLevel;
using qmx::PixelKernels;
using qmx::SampleRange;
using test::Data;
using test::kLongestRow;
using test::Side;
using Byte = unsigned char;

/// What a kernel works on, at all levels the same.
struct Case {
    Data data;
    std::size_t count;
    Side side;

    template <class T>
    std::unique_ptr<test::GuardedBuffer<T>> buffer(std::size_t samples, std::uint64_t seed) const {
        return std::make_unique<test::GuardedBuffer<T>>(
            test::kernelData<T>(data, samples, 1000 * seed + count), side);
    }
};

struct ThreeRows {
    explicit ThreeRows(const Case& of)
        : a(of.buffer<short>(of.count, 1)),
          b(of.buffer<short>(of.count, 2)),
          c(of.buffer<short>(of.count, 3)),
          rows{a->data(), b->data(), c->data()} {}
    std::vector<std::vector<short>> contents() const {
        return {a->samples(), b->samples(), c->samples()};
    }

    std::unique_ptr<test::GuardedBuffer<short>> a, b, c;
    short* rows[3];
};

template <class T>
constexpr SampleRange<T> kRanges[] = {
    {std::numeric_limits<T>::min(), std::numeric_limits<T>::max()}, {0, 255}, {0, 4095}, {0, 0}};

class PixelKernelsTest : public test::AtCpuLevel {
protected:
    /// Expects work(kernels, case) to return the same for the kernels of the level and the plain ones.
    template <class Work>
    static void expectPlain(Work work) {
        for (const Data data : test::kAllData)
            for (std::size_t count = 0; count <= kLongestRow; ++count)
                for (const Side side : test::kBothSides) {
                    const Case c{data, count, side};
                    ASSERT_EQ(work(qmx::kernelsAt<qmx::PixelKernels>(GetParam()), c),
                              work(qmx::kernelsAt<qmx::PixelKernels>(CpuLevel::scalar), c))
                        << nameOf(data) << ", count " << count << ", " << nameOf(side);
                }
    }
};

TEST_P(PixelKernelsTest, BytesAreWidened) {
    expectPlain([](const PixelKernels& kernels, const Case& c) {
        const auto samples = c.buffer<Byte>(c.count, 1);
        const auto row = c.buffer<short>(c.count, 2);
        kernels.widenBytes(row->data(), samples->data(), c.count);
        return row->samples();
    });
}

TEST_P(PixelKernelsTest, ShortsAreWidened) {
    expectPlain([](const PixelKernels& kernels, const Case& c) {
        const auto samples = c.buffer<Byte>(2 * c.count, 1);
        const auto row = c.buffer<int>(c.count, 2);
        kernels.widenShorts(row->data(), samples->data(), c.count);
        return row->samples();
    });
}

TEST_P(PixelKernelsTest, BytesOfThreePlanesAreSeparated) {
    expectPlain([](const PixelKernels& kernels, const Case& c) {
        const auto samples = c.buffer<Byte>(3 * c.count, 4);
        const ThreeRows rows(c);
        kernels.separateBytes(rows.rows, samples->data(), c.count);
        return rows.contents();
    });
}

TEST_P(PixelKernelsTest, ColoursAreSeparatedAndTransformed) {
    expectPlain([](const PixelKernels& kernels, const Case& c) {
        const auto samples = c.buffer<Byte>(3 * c.count, 4);
        const ThreeRows rows(c);
        kernels.separateColours(rows.rows, samples->data(), c.count);
        return rows.contents();
    });
}

TEST_P(PixelKernelsTest, ShortsAreLimitedAndNarrowed) {
    for (const auto& range : kRanges<short>) {
        expectPlain([&](const PixelKernels& kernels, const Case& c) {
            const auto row = c.buffer<short>(c.count, 1);
            const auto samples = c.buffer<Byte>(c.count, 2);
            kernels.narrowToBytes(samples->data(), row->data(), c.count, range);
            return samples->samples();
        });
        expectPlain([&](const PixelKernels& kernels, const Case& c) {
            const auto row = c.buffer<short>(c.count, 1);
            const auto samples = c.buffer<Byte>(2 * c.count, 2);
            kernels.limitShorts(samples->data(), row->data(), c.count, range);
            return samples->samples();
        });
    }
}

TEST_P(PixelKernelsTest, IntsAreLimitedAndNarrowed) {
    for (const auto& range : kRanges<int>)
        expectPlain([&](const PixelKernels& kernels, const Case& c) {
            const auto row = c.buffer<int>(c.count, 1);
            const auto samples = c.buffer<Byte>(2 * c.count, 2);
            kernels.narrowToShorts(samples->data(), row->data(), c.count, range);
            return samples->samples();
        });
}

TEST_P(PixelKernelsTest, SamplesOfTwoBytesMayStandAtOddAddresses) {
    // One byte more than they need, at the other side of the page.
    const auto samplesOf = [](const Case& c) { return c.buffer<Byte>(2 * c.count + 1, 1); };
    const auto oddOf = [](const Case& c, const auto& samples) {
        return samples->data() + (c.side == Side::atEnd ? 0 : 1);
    };
    expectPlain([&](const PixelKernels& kernels, const Case& c) {
        const auto samples = samplesOf(c);
        const auto row = c.buffer<int>(c.count, 2);
        kernels.widenShorts(row->data(), oddOf(c, samples), c.count);
        return row->samples();
    });
    expectPlain([&](const PixelKernels& kernels, const Case& c) {
        const auto samples = samplesOf(c);
        const auto row = c.buffer<int>(c.count, 2);
        kernels.narrowToShorts(oddOf(c, samples), row->data(), c.count, {0, 4095});
        return samples->samples();
    });
    expectPlain([&](const PixelKernels& kernels, const Case& c) {
        const auto samples = samplesOf(c);
        const auto row = c.buffer<short>(c.count, 2);
        kernels.limitShorts(oddOf(c, samples), row->data(), c.count, {0, 4095});
        return samples->samples();
    });
}

TEST_P(PixelKernelsTest, ThreePlanesAreJoined) {
    for (const auto& range : kRanges<short>) {
        expectPlain([&](const PixelKernels& kernels, const Case& c) {
            const ThreeRows rows(c);
            const auto samples = c.buffer<Byte>(3 * c.count, 4);
            kernels.joinColours(samples->data(), rows.rows, c.count, range);
            return samples->samples();
        });
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, PixelKernelsTest, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
