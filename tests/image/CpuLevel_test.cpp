#include "image/CpuLevel.h"

#include <fstream>
#include <set>
#include <sstream>
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

/// Returns: the words behind a field of the first processor of /proc/cpuinfo.
std::set<std::string> systemWords(std::string_view field) {
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        if (!line.starts_with(field)) continue;
        std::istringstream words(line.substr(line.find(':') + 1));
        return {std::istream_iterator<std::string>(words), {}};
    }
    return {};
}

/// What the system reports, in its words.
CpuLevel levelOfSystem() {
    const std::set<std::string> flags = systemWords("flags");
    const auto has = [&](const char* flag) { return flags.contains(flag); };
    // Families 21 and 23 of this vendor are those with slow pext and pdep, as far as they have AVX2.
    const std::set<std::string> family = systemWords("cpu family");
    const bool isSlow = systemWords("vendor_id").contains("AuthenticAMD") &&
                        (family.contains("21") || family.contains("23"));
    if (!(has("avx2") && has("bmi1") && has("bmi2") && has("popcnt")) || isSlow)
        return CpuLevel::scalar;
    const bool hasWide = has("avx512f") && has("avx512bw") && has("avx512dq") && has("avx512vl") &&
                         has("avx512cd") && has("avx512vbmi") && has("avx512_vbmi2");
    return hasWide ? CpuLevel::avx512 : CpuLevel::avx2;
}

/// Without it, a level that is never found would only show in tests that are skipped. `tools/check oldcpu`
/// leaves it out: an emulator of processors shows the host's /proc/cpuinfo.
TEST(CpuLevel, TheBestLevelIsThatOfTheSystemsFlags) {
    if (systemWords("flags").empty()) GTEST_SKIP() << "/proc/cpuinfo has no flags";
    EXPECT_STREQ(nameOf(bestCpuLevel()), nameOf(levelOfSystem()));
}

}  // namespace
