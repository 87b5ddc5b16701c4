#include "api/CCallMemory.h"

#include <algorithm>
#include <cassert>
#include <cstdlib>
#include <limits>
#include <new>

namespace qmx {

AllocatorHooks defaultHooks() {
    return {[](void*, std::size_t sizeBytes) { return std::malloc(sizeBytes); },
            [](void*, void* memory) { std::free(memory); }, nullptr};
}

CCallMemory::CCallMemory(const AllocatorHooks& callHooks, std::size_t limitBytes)
    : hooks(callHooks),
      limit(limitBytes == 0 ? std::numeric_limits<std::size_t>::max() : limitBytes) {}

void* CCallMemory::do_allocate(std::size_t sizeBytes, [[maybe_unused]] std::size_t alignmentBytes) {
    assert(alignmentBytes <= alignof(std::max_align_t));
    if (!allows(sizeBytes)) {
        refused = true;
        throw std::bad_alloc();
    }
    // Null means failure, so no allocation is empty.
    void* memory = hooks.allocate(hooks.user, std::max<std::size_t>(sizeBytes, 1));
    if (memory == nullptr) throw std::bad_alloc();
    held += sizeBytes;
    peak = std::max(peak, held);
    return memory;
}

void CCallMemory::do_deallocate(void* memory, std::size_t sizeBytes, std::size_t) {
    held -= sizeBytes;
    hooks.release(hooks.user, memory);
}

}  // namespace qmx
