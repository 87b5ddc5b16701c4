#pragma once

#include <cstddef>
#include <limits>

namespace test {

/// What the allocators of the process do for this thread while it is watched. Programs that link
/// ProcessHeap.cpp replace new, and are linked so that calls of malloc and its fellows pass by there, those
/// of the C++ runtime for exceptions too: tests/CMakeLists.txt.
struct ProcessHeap {
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    bool isWatched = false;
    std::size_t allocations = 0;
    /// The allocation with this number, from 0, and all later ones fail.
    std::size_t failFrom = kNever;
    /// The later ones succeed again.
    bool failsOnce = false;
    /// Allocated and not released, and the most at one time.
    std::ptrdiff_t live = 0;
    std::ptrdiff_t mostLive = 0;
    /// The largest allocation.
    std::size_t largestBytes = 0;
};

extern thread_local ProcessHeap processHeap;

}  // namespace test
