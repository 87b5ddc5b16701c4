#include "image/CpuLevel.h"

#include "support/CpuLevels.h"

namespace {

using namespace qmx;

using CpuLevelTest = test::AtCpuLevel;

TEST_P(CpuLevelTest, TheForcedLevelIsTheActiveOne) {
    EXPECT_EQ(activeCpuLevel(), GetParam());
    {
        const CCpuLevelGuard inner(CpuLevel::scalar);
        EXPECT_EQ(activeCpuLevel(), CpuLevel::scalar);
    }
    EXPECT_EQ(activeCpuLevel(), GetParam());
}

INSTANTIATE_TEST_SUITE_P(Levels, CpuLevelTest, test::allCpuLevels(), test::cpuLevelName());

TEST(CpuLevel, TheBestLevelIsActiveWithoutAGuard) {
    EXPECT_EQ(activeCpuLevel(), bestCpuLevel());
    std::printf("best level: %s\n", nameOf(bestCpuLevel()));
}

}  // namespace
