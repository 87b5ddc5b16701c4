#include "api/CKeptMemory.h"

#include <algorithm>
#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__)
#define QMX_ADDRESS_SANITIZER 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define QMX_ADDRESS_SANITIZER 1
#endif
#endif
#ifdef QMX_ADDRESS_SANITIZER
#include <sanitizer/asan_interface.h>
#endif

namespace qmx {
namespace {

/// Kept blocks are nobody's: the sanitizer reports who touches one, as it would after free.
void close([[maybe_unused]] void* block, [[maybe_unused]] std::size_t sizeBytes) {
#ifdef QMX_ADDRESS_SANITIZER
    ASAN_POISON_MEMORY_REGION(block, sizeBytes);
#endif
}

void open([[maybe_unused]] void* block, [[maybe_unused]] std::size_t sizeBytes) {
#ifdef QMX_ADDRESS_SANITIZER
    ASAN_UNPOISON_MEMORY_REGION(block, sizeBytes);
#endif
}

}  // namespace

AllocatorHooks defaultHooks() {
    return {[](void*, std::size_t sizeBytes) { return std::malloc(sizeBytes); },
            [](void*, void* memory) { std::free(memory); }, nullptr};
}

CKeptMemory::Shelf* CKeptMemory::shelfOf(std::size_t sizeBytes) {
    // Sizes are multiples of 16 most of the time: their lower bits say little.
    std::size_t at = (sizeBytes >> 4) ^ (sizeBytes >> 11);
    for (std::size_t tried = 0; tried < kShelves; ++tried, ++at) {
        Shelf& shelf = shelves[at % kShelves];
        if (shelf.sizeBytes == 0) shelf.sizeBytes = sizeBytes;
        if (shelf.sizeBytes == sizeBytes) return &shelf;
    }
    isFull = true;
    return nullptr;
}

void* CKeptMemory::take(std::size_t sizeBytes, std::size_t roomBytes) {
    Shelf* shelf = kept == 0 ? nullptr : shelfOf(sizeBytes);
    if (shelf != nullptr && shelf->first != nullptr) {
        Block* block = shelf->first;
        open(block, sizeBytes);
        shelf->first = block->next;
        shelf->spareNow = std::min(shelf->spareNow, --shelf->blocks);
        kept -= sizeBytes;
        return block;
    }
    if (kept > roomBytes - sizeBytes) releaseAll();
    void* block = hooks.allocate(hooks.user, sizeBytes);
    if (block != nullptr || kept == 0) return block;
    releaseAll();
    return hooks.allocate(hooks.user, sizeBytes);
}

void CKeptMemory::give(void* block, std::size_t sizeBytes) {
    const bool hasRoom = sizeBytes >= sizeof(Block) && sizeBytes <= most - kept;
    Shelf* shelf = hasRoom ? shelfOf(sizeBytes) : nullptr;
    if (shelf == nullptr) return hooks.release(hooks.user, block);
    shelf->first = new (block) Block{shelf->first};
    ++shelf->blocks;
    kept += sizeBytes;
    close(block, sizeBytes);
}

void CKeptMemory::releaseBlocks(Shelf& shelf, std::size_t count) {
    for (; count != 0; --count) {
        Block* block = shelf.first;
        open(block, shelf.sizeBytes);
        shelf.first = block->next;
        --shelf.blocks;
        kept -= shelf.sizeBytes;
        hooks.release(hooks.user, block);
    }
}

void CKeptMemory::endCall() {
    if (isFull) return releaseAll();
    // Two calls: a codec that compresses and decompresses in turn finds the memory of both.
    for (Shelf& shelf : shelves) {
        const std::size_t spare = std::min(shelf.spareNow, shelf.spareBefore);
        releaseBlocks(shelf, spare);
        shelf.spareBefore = shelf.spareNow - spare;
        shelf.spareNow = shelf.blocks;
    }
}

void CKeptMemory::releaseAll() {
    for (Shelf& shelf : shelves)
        releaseBlocks(shelf, shelf.blocks);
    shelves = {};
    isFull = false;
}

}  // namespace qmx
