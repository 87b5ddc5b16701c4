#pragma once

#include <atomic>

namespace qmx {

/// A request to stop that another thread may make at any time. Once it was seen it stays, so that a call
/// that was cut short anywhere is never taken for a whole one, whatever becomes of the flag.
class CStopRequest {
public:
    /// Never set.
    CStopRequest() = default;
    /// Requires: requestFlag outlives this object.
    explicit CStopRequest(const std::atomic<bool>& requestFlag) : flag(&requestFlag) {}
    CStopRequest(const CStopRequest&) = delete;
    CStopRequest& operator=(const CStopRequest&) = delete;

    bool isSet() const {
        if (flag != nullptr && !wasSeen) wasSeen = flag->load(std::memory_order_relaxed);
        return wasSeen;
    }

private:
    const std::atomic<bool>* flag = nullptr;
    mutable bool wasSeen = false;
};

/// For work that nobody stops.
inline const CStopRequest kNeverStopped;

}  // namespace qmx
