#pragma once

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <string_view>

// How the programs that make their own tables measure.

namespace bench {

/// Returns: processor time of the process, helper threads of a library included: on an idle machine that
/// of a clock, on a busy one still of use.
inline double processorSeconds() {
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

template <class Work>
double secondsOf(Work work) {
    const double start = processorSeconds();
    work();
    return processorSeconds() - start;
}

/// Takes --rounds=N out of argv, where it is the first argument. Returns: N, or otherwise.
inline int takeRounds(int& argc, char** argv, int otherwise) {
    constexpr std::string_view kOption = "--rounds=";
    if (argc < 2 || !std::string_view(argv[1]).starts_with(kOption)) return otherwise;
    const int rounds = std::atoi(argv[1] + kOption.size());
    std::copy(argv + 2, argv + argc + 1, argv + 1);
    --argc;
    return std::max(rounds, 1);
}

/// Takes an option without a value out of argv, wherever it stands. Returns: whether it was there.
inline bool takeFlag(int& argc, char** argv, std::string_view option) {
    const auto isOption = [&](const char* word) { return word == option; };
    char** end = std::remove_if(argv + 1, argv + argc, isOption);
    const bool isThere = end != argv + argc;
    argc = static_cast<int>(end - argv);
    argv[argc] = nullptr;
    return isThere;
}

}  // namespace bench
