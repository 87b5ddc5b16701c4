#include "coding/syntax/ScanOrder.h"

#include <gtest/gtest.h>
#include <vector>

namespace {

int cappedZeros(int v, int levels) {
    int zeros = 0;
    while (zeros < levels && (v == 0 || v % 2 == 0)) {
        v /= 2;
        ++zeros;
    }
    return zeros;
}

TEST(ScanOrder, VisitsEveryColumnOnceWithItsOrder) {
    constexpr int kWidth = 75;
    for (int levels = 0; levels <= 5; ++levels) {
        for (int row = 0; row < 70; ++row) {
            std::vector<int> orders(kWidth, -1);
            int lastOrder = -1;
            qmx::forEachOrder(row, levels, [&](const qmx::ScanLine& line) {
                EXPECT_GT(line.order, lastOrder);
                lastOrder = line.order;
                for (int c = line.firstColumn; c < kWidth; c += line.stepColumns) {
                    EXPECT_EQ(orders[static_cast<std::size_t>(c)], -1);
                    orders[static_cast<std::size_t>(c)] = line.order;
                }
            });
            for (int c = 0; c < kWidth; ++c)
                ASSERT_EQ(orders[static_cast<std::size_t>(c)],
                          std::min(cappedZeros(c, levels), cappedZeros(row, levels)));
        }
    }
}

TEST(ScanOrder, WithoutOrdersNothingIsVisited) {
    for (const int row : {0, 1, 2, 31})
        qmx::forEachOrder(row, -1, [](const qmx::ScanLine&) { FAIL(); });
}

TEST(ScanLine, CountsTheCoefficientsFromAColumnOn) {
    const qmx::ScanLine line{1, 2, 4};
    EXPECT_EQ(line.countFrom(2, 2), 0);
    EXPECT_EQ(line.countFrom(2, 3), 1);
    EXPECT_EQ(line.countFrom(2, 6), 1);
    EXPECT_EQ(line.countFrom(2, 7), 2);
    EXPECT_EQ(line.countFrom(6, 7), 1);
    EXPECT_EQ(line.countFrom(10, 7), 0);
}

}  // namespace
