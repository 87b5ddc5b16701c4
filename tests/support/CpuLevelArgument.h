#pragma once

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "image/CpuLevel.h"

namespace test {

/// The exit status for which CTest says "skipped": SKIP_RETURN_CODE in the lists of tests.
inline constexpr int kSkipped = 77;

/// Returns: the level of a name. Ends the process when there is none of this name, or when the
/// processor lacks the level, with kSkipped.
inline qmx::CpuLevel cpuLevelNamed(std::string_view name) {
    for (int i = 0; i < qmx::kCpuLevels; ++i) {
        const auto level = static_cast<qmx::CpuLevel>(i);
        if (name != nameOf(level)) continue;
        if (level <= qmx::bestCpuLevel()) return level;
        std::fprintf(stderr, "no %s on this processor\n", nameOf(level));
        std::exit(kSkipped);
    }
    std::fprintf(stderr, "--cpu-level=: scalar, avx2 or avx512\n");
    std::exit(2);
}

/// Takes `--cpu-level=LEVEL` out of the arguments when it is the first, and says so on standard
/// error. Returns: the level it asks for, without it the active one: what a CCpuLevelGuard is to set.
inline qmx::CpuLevel takeCpuLevel(int& argc, char** argv) {
    constexpr std::string_view kOption = "--cpu-level=";
    if (argc < 2 || std::strncmp(argv[1], kOption.data(), kOption.size()) != 0)
        return qmx::activeCpuLevel();
    const qmx::CpuLevel level = cpuLevelNamed(argv[1] + kOption.size());
    std::fprintf(stderr, "CPU level: %s\n", nameOf(level));
    // The null pointer behind the last argument moves along.
    for (int i = 1; i < argc; ++i)
        argv[i] = argv[i + 1];
    --argc;
    return level;
}

}  // namespace test
