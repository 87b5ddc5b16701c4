#pragma once

#include <thread>

namespace qmx {

/// Takes care of SIGINT, SIGTERM and SIGHUP as long as it lives: files that are being written are removed, then the
/// signal ends the process as it would have. A thread of its own waits for them, so that nothing has to be safe
/// within a signal handler. Where there is no thread to be had, signals do what they always do.
class CInterruption {
public:
    /// Requires: there are no other threads yet; those to come inherit that signals are not theirs.
    CInterruption();
    CInterruption(const CInterruption&) = delete;
    CInterruption& operator=(const CInterruption&) = delete;
    ~CInterruption();

private:
    std::thread waiting;
};

}  // namespace qmx
