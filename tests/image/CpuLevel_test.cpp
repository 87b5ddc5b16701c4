#include "image/CpuLevel.h"

#include <fstream>
#include <string_view>
#include <vector>

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

/// Returns: the arguments of this process, read without the help of main.
std::vector<std::string> processArguments() {
    std::ifstream file("/proc/self/cmdline", std::ios::binary);
    std::vector<std::string> arguments;
    for (std::string argument; std::getline(file, argument, '\0');)
        arguments.push_back(argument);
    return arguments;
}

TEST(CpuLevel, TheBestLevelIsActiveUnlessTheCommandLineForcesAnother) {
    constexpr std::string_view kOption = "--cpu-level=";
    std::string expected = nameOf(bestCpuLevel());
    for (const std::string& argument : processArguments())
        if (argument.starts_with(kOption)) expected = argument.substr(kOption.size());
    EXPECT_EQ(nameOf(activeCpuLevel()), expected);
    std::printf("active level: %s\n", nameOf(activeCpuLevel()));
}

}  // namespace
