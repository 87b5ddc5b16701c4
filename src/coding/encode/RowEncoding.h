#pragma once

#include <atomic>

namespace qmx {

/// How an image is coded where that is a choice.
struct RowEncoding {
    /// Filters an image without levels once, as decoders expect it (Quirk 4).
    bool filtersThinImages = false;
    /// Rows in front of this one are left out of all colour planes but the first (Quirk 5).
    int firstRowOfLaterPlanes = 0;
    /// While true, the work ends. May be null.
    const std::atomic<bool>* stop = nullptr;

    int firstRowOf(int plane) const { return plane == 0 ? 0 : firstRowOfLaterPlanes; }
    bool isStopped() const { return stop != nullptr && stop->load(std::memory_order_relaxed); }
};

}  // namespace qmx
