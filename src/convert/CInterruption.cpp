#include "convert/CInterruption.h"

#include <atomic>
#include <csignal>
#include <pthread.h>
#include <system_error>

#include "convert/PartFiles.h"

namespace qmx {
namespace {

/// What tells the waiting thread that nothing is left to wait for.
constexpr int kEnd = SIGUSR1;

sigset_t signalsOf(std::initializer_list<int> numbers) {
    sigset_t set;
    sigemptyset(&set);
    for (const int number : numbers)
        sigaddset(&set, number);
    return set;
}

/// What was ignored when the program began, as by nohup, stays so.
bool isIgnored(int number) {
    struct sigaction action {};
    return sigaction(number, nullptr, &action) == 0 && action.sa_handler == SIG_IGN;
}

[[noreturn]] void endBy(int number) {
    removePartFilesForGood();
    signal(number, SIG_DFL);
    const sigset_t own = signalsOf({number});
    pthread_sigmask(SIG_UNBLOCK, &own, nullptr);
    raise(number);
    std::_Exit(128 + number);
}

/// kEnd means the end only once this is set: other processes may send it, too.
std::atomic<bool> isOver = false;

void waitForSignals(sigset_t awaited) {
    while (!isOver) {
        int number = 0;
        if (sigwait(&awaited, &number) == 0 && number != kEnd) endBy(number);
    }
}

}  // namespace

CInterruption::CInterruption() {
    sigset_t awaited = signalsOf({kEnd});
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        if (!isIgnored(number)) sigaddset(&awaited, number);
    pthread_sigmask(SIG_BLOCK, &awaited, nullptr);
    try {
        waiting = std::thread(waitForSignals, awaited);
    } catch (const std::system_error&) {
        // Without the thread a signal ends the process as it would have, and leaves what was being written.
        pthread_sigmask(SIG_UNBLOCK, &awaited, nullptr);
    }
}

CInterruption::~CInterruption() {
    if (!waiting.joinable()) return;
    isOver = true;
    pthread_kill(waiting.native_handle(), kEnd);
    waiting.join();
}

}  // namespace qmx
