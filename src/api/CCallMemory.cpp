#include "api/CCallMemory.h"

#include <algorithm>
#include <cassert>
#include <limits>
#include <new>

namespace qmx {

CCallMemory::CCallMemory(CKeptMemory& keptMemory, std::size_t limitBytes)
    : kept(keptMemory),
      limit(limitBytes == 0 ? std::numeric_limits<std::size_t>::max() : limitBytes) {}

void* CCallMemory::do_allocate(std::size_t sizeBytes, [[maybe_unused]] std::size_t alignmentBytes) {
    assert(alignmentBytes <= alignof(std::max_align_t));
    if (!allows(sizeBytes)) {
        refused = true;
        throw std::bad_alloc();
    }
    // Null means failure, so no allocation is empty.
    const std::size_t blockBytes = std::max<std::size_t>(sizeBytes, 1);
    void* memory = kept.take(blockBytes, std::max(limit - held, blockBytes));
    if (memory == nullptr) throw std::bad_alloc();
    held += sizeBytes;
    peak = std::max(peak, held);
    return memory;
}

void CCallMemory::do_deallocate(void* memory, std::size_t sizeBytes, std::size_t) {
    held -= sizeBytes;
    kept.give(memory, std::max<std::size_t>(sizeBytes, 1));
}

}  // namespace qmx
