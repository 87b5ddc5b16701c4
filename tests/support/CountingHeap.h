#pragma once

#include <algorithm>
#include <cstdlib>
#include <limits>
#include <map>
#include <vector>

#include "api/tesk.h"

namespace test {

/// Allocator hooks that count, fail on request and stop a codec on request.
class CountingHeap {
public:
    static constexpr std::size_t kNever = std::numeric_limits<std::size_t>::max();

    CountingHeap() = default;
    CountingHeap(const CountingHeap&) = delete;
    CountingHeap& operator=(const CountingHeap&) = delete;
    /// What a codec forgot is reported here.
    ~CountingHeap() {
        EXPECT_TRUE(live.empty());
        for (const auto& [memory, size] : live)
            std::free(memory);
    }

    tesk_options options() {
        tesk_options chosen = TESK_OPTIONS_INIT;
        chosen.allocate = [](void* user, std::size_t size) { return of(user).allocate(size); };
        chosen.release = [](void* user, void* memory) { of(user).release(memory); };
        chosen.user = this;
        // So that every call asks for all of its memory.
        chosen.most_kept_bytes = 0;
        return chosen;
    }
    /// Counts calls from 0 on again.
    void restart() {
        calls = 0;
        sizes.clear();
    }

    /// Since the restart.
    std::size_t calls = 0;
    std::vector<std::size_t> sizes;
    /// The call that fails, counted from 0, and all behind it unless failsOnce.
    std::size_t failAt = kNever;
    bool failsOnce = false;
    /// The call that stops a codec.
    std::size_t stopAt = kNever;
    tesk_codec* stopped = nullptr;
    std::map<void*, std::size_t> live;
    std::size_t liveBytes = 0;
    std::size_t mostLiveBytes = 0;

private:
    static CountingHeap& of(void* user) { return *static_cast<CountingHeap*>(user); }
    void* allocate(std::size_t size) {
        const std::size_t call = calls++;
        sizes.push_back(size);
        if (call == stopAt) tesk_stop(stopped);
        if (call == failAt || (call > failAt && !failsOnce)) return nullptr;
        void* memory = std::malloc(size);
        live[memory] = size;
        liveBytes += size;
        mostLiveBytes = std::max(mostLiveBytes, liveBytes);
        return memory;
    }
    void release(void* memory) {
        if (const auto block = live.find(memory); block != live.end()) liveBytes -= block->second;
        EXPECT_EQ(live.erase(memory), 1U) << "not from here, or released twice";
        std::free(memory);
    }
};

}  // namespace test
