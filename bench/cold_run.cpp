// Runs a command again and again and prints what a single cold run of it costs:
// `cold_run RUNS COMMAND [ARGUMENT ...]` gives one line, "WALL-MS CPU-MS PEAK-MB FAULTS": the minima of
// wall and processor time, the greatest resident set, and the page faults of the fastest run. What the
// command prints on standard output is dropped. The exit status is 1 as soon as the command's is not 0.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <limits>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>

extern char** environ;  // NOLINT: as POSIX declares it

namespace {

struct Cost {
    double wallSeconds = std::numeric_limits<double>::infinity();
    double processorSeconds = std::numeric_limits<double>::infinity();
    long residentKilobytes = 0;
    long faults = 0;
};

double secondsOf(const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
}

/// Returns: a process that runs the command, or -1. This program is small, and so is what the child's
/// resident set starts with.
pid_t start(char** command) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, 1, "/dev/null", O_WRONLY, 0);
    pid_t child = -1;
    if (posix_spawnp(&child, command[0], &actions, nullptr, command, environ) != 0) child = -1;
    posix_spawn_file_actions_destroy(&actions);
    return child;
}

/// Runs the command once and takes its cost into the minima. Returns: false when it fails.
bool runOnce(char** command, Cost& least) {
    const auto begin = std::chrono::steady_clock::now();
    const pid_t child = start(command);
    int status = 0;
    rusage usage{};
    if (child < 0 || wait4(child, &status, 0, &usage) != child) return false;
    const std::chrono::duration<double> wall = std::chrono::steady_clock::now() - begin;
    if (wall.count() < least.wallSeconds) least.faults = usage.ru_minflt;
    least.wallSeconds = std::min(least.wallSeconds, wall.count());
    least.processorSeconds =
        std::min(least.processorSeconds, secondsOf(usage.ru_utime) + secondsOf(usage.ru_stime));
    least.residentKilobytes = std::max(least.residentKilobytes, usage.ru_maxrss);
    return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        std::fputs("Usage: cold_run RUNS COMMAND [ARGUMENT ...]\n", stderr);
        return 1;
    }
    Cost least;
    for (int run = 0; run < std::atoi(argv[1]); ++run)
        if (!runOnce(argv + 2, least)) {
            std::fprintf(stderr, "%s fails\n", argv[2]);
            return 1;
        }
    std::printf("%.2f %.2f %.1f %ld\n", 1e3 * least.wallSeconds, 1e3 * least.processorSeconds,
                static_cast<double>(least.residentKilobytes) / 1024.0, least.faults);
    return 0;
}
