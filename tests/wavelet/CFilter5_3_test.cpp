#include "wavelet/CFilter5_3.h"

#include <gtest/gtest.h>
#include <limits>
#include <vector>

#include "support/TestImages.h"
#include "wavelet/LiftingRounding.h"

namespace {

using qmx::CFilter5_3;
using qmx::half;
using qmx::quarter;

template <class T>
class Filter : public testing::Test {
protected:
    using Line = std::vector<T>;

    Line forward(Line line) {
        EXPECT_EQ(filter.transform(line.data(), static_cast<int>(line.size()), 1), 0);
        return line;
    }
    Line backward(Line line) {
        filter.untransform(line.data(), static_cast<int>(line.size()), 1);
        return line;
    }
    /// Full-range values, so that sums and coefficients wrap.
    Line extremes(int length, std::uint64_t seed) {
        test::Random random(seed);
        Line line;
        for (int i = 0; i < length; ++i) {
            const auto choice = random.below(4);
            const T any = static_cast<T>(random.next());
            line.push_back(choice == 0   ? std::numeric_limits<T>::min()
                           : choice == 1 ? std::numeric_limits<T>::max()
                                         : any);
        }
        return line;
    }

    CFilter5_3<T> filter;
};

using Types = testing::Types<short, int>;
TYPED_TEST_SUITE(Filter, Types);

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

TYPED_TEST(Filter, ShortLinesStayAsTheyAre) {
    for (const std::vector<TypeParam>& line :
         {std::vector<TypeParam>{}, {9}, {9, -3}, {9, -3, 100}}) {
        EXPECT_EQ(this->forward(line), line);
        EXPECT_EQ(this->backward(line), line);
    }
}

TYPED_TEST(Filter, FourSamplesByTheFormulas) {
    const auto line = this->forward({10, 21, 7, 40});
    const int x1 = 21 - half(10 + 7);
    const int x3 = 40 - 7;
    EXPECT_EQ(line[1], x1);
    EXPECT_EQ(line[0], 10 + half(x1));
    EXPECT_EQ(line[3], x3);
    EXPECT_EQ(line[2], 7 + quarter(x1 + x3));
}

TYPED_TEST(Filter, FiveSamplesByTheFormulas) {
    const auto line = this->forward({10, 21, 7, 40, 3});
    const int x1 = 21 - half(10 + 7);
    const int x3 = 40 - half(7 + 3);
    EXPECT_EQ(line[1], x1);
    EXPECT_EQ(line[0], 10 + half(x1));
    EXPECT_EQ(line[3], x3);
    EXPECT_EQ(line[2], 7 + quarter(x1 + x3));
    EXPECT_EQ(line[4], 3 + half(x3));
}

TYPED_TEST(Filter, ConstantLinesHaveNoDetail) {
    for (std::size_t length = 4; length < 40; ++length) {
        const auto line = this->forward(std::vector<TypeParam>(length, 77));
        for (std::size_t i = 0; i < length; ++i)
            EXPECT_EQ(line[i], i % 2 == 0 ? 77 : 0) << length << " " << i;
    }
}

TYPED_TEST(Filter, NegativeHalvesRoundAwayFromZero) {
    EXPECT_EQ(this->forward({0, 0, -3, 0})[1], 2);
}

TYPED_TEST(Filter, InverseRestoresEveryLengthEvenWhenValuesWrap) {
    for (int length = 0; length <= 200; ++length) {
        const auto line = this->extremes(length, static_cast<std::uint64_t>(length));
        EXPECT_EQ(this->backward(this->forward(line)), line) << length;
    }
}

TYPED_TEST(Filter, ABatchEqualsItsLinesOneByOne) {
    for (const int step : {1, 2, 3}) {
        for (const int length : {4, 5, 16, 33}) {
            const int count = 17;
            const int stride = count * step + 5;
            const auto image = this->extremes(length * stride, 99);
            auto batch = image;
            this->filter.transformMul(batch.data(), length, static_cast<unsigned long>(stride),
                                      count, static_cast<unsigned long>(step));
            auto single = image;
            for (int i = 0; i < count; ++i)
                this->filter.transform(single.data() + i * step, length,
                                       static_cast<unsigned long>(stride));
            EXPECT_EQ(batch, single);
            this->filter.untransformMul(batch.data(), length, static_cast<unsigned long>(stride),
                                        count, static_cast<unsigned long>(step));
            EXPECT_EQ(batch, image);
        }
    }
}

TYPED_TEST(Filter, ABatchWithoutLinesChangesNothing) {
    const auto line = this->extremes(64, 5);
    auto copy = line;
    this->filter.transformMul(copy.data(), 8, 8, 0, 1);
    this->filter.untransformMul(copy.data(), 8, 8, -3, 1);
    EXPECT_EQ(copy, line);
}

}  // namespace
