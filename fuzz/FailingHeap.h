#pragma once

#include <tesk/tesk.h>

#include "FuzzInput.h"
#include "FuzzMemory.h"

namespace fuzz {

/// An allocator that fails after a number of allocations and counts what is held.
struct FailingHeap {
    std::uint64_t allocationsLeft;
    std::int64_t held = 0;

    /// Sets the hooks. Requires: this object outlives the codec.
    void serve(tesk_options& options) {
        options.allocate = allocate;
        options.release = release;
        options.user = this;
    }

private:
    static void* allocate(void* user, std::size_t sizeBytes) {
        auto& heap = *static_cast<FailingHeap*>(user);
        if (heap.allocationsLeft == 0) return nullptr;
        --heap.allocationsLeft;
        void* memory = limitedMalloc(sizeBytes);
        if (memory != nullptr) ++heap.held;
        return memory;
    }
    static void release(void* user, void* memory) {
        require(memory != nullptr, "only memory is released");
        --static_cast<FailingHeap*>(user)->held;
        std::free(memory);
    }
};

}  // namespace fuzz
