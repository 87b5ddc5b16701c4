#include "api/CKeptMemory.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
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

/// Kept blocks are nobody's: the sanitizer reports who touches what is behind their links, as it would after free.
void close([[maybe_unused]] void* behindLink, [[maybe_unused]] std::size_t sizeBytes) {
#ifdef QMX_ADDRESS_SANITIZER
    ASAN_POISON_MEMORY_REGION(behindLink, sizeBytes);
#endif
}

void open([[maybe_unused]] void* behindLink, [[maybe_unused]] std::size_t sizeBytes) {
#ifdef QMX_ADDRESS_SANITIZER
    ASAN_UNPOISON_MEMORY_REGION(behindLink, sizeBytes);
#endif
}

/// Smaller blocks share their pages.
constexpr std::size_t kLeastPageBytes = 4096;

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
        open(block + 1, sizeBytes - sizeof(Block));
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
    close(shelf->first + 1, sizeBytes - sizeof(Block));
}

void CKeptMemory::releaseBlocks(Shelf& shelf, std::size_t count) {
    for (; count != 0; --count) {
        Block* block = shelf.first;
        open(block + 1, shelf.sizeBytes - sizeof(Block));
        shelf.first = block->next;
        --shelf.blocks;
        kept -= shelf.sizeBytes;
        hooks.release(hooks.user, block);
    }
}

CKeptMemory::Block* CKeptMemory::sorted(Block* first, std::size_t count) {
    if (count == 0) return nullptr;
    if (count == 1) {
        first->next = nullptr;
        return first;
    }
    Block* middle = first;
    for (std::size_t i = 0; i < count / 2; ++i)
        middle = middle->next;
    Block* upper = sorted(middle, count - count / 2);
    Block* lower = sorted(first, count / 2);
    Block* all = nullptr;
    for (Block** end = &all; lower != nullptr || upper != nullptr; end = &(*end)->next) {
        const bool isLower = upper == nullptr || (lower != nullptr && std::less<>()(lower, upper));
        Block*& next = isLower ? lower : upper;
        *end = next;
        next = next->next;
    }
    return all;
}

void CKeptMemory::endCall() {
    if (isFull) return releaseAll();
    // Two calls: a codec that compresses and decompresses in turn finds the memory of both.
    for (Shelf& shelf : shelves) {
        const std::size_t spare = std::min(shelf.spareNow, shelf.spareBefore);
        releaseBlocks(shelf, spare);
        shelf.spareBefore = shelf.spareNow - spare;
        shelf.spareNow = shelf.blocks;
        // Sections fill their last chunks in part. In a like call each one gets the block that it had, and no
        // page of another one's that nobody has touched yet.
        if (shelf.sizeBytes >= kLeastPageBytes) shelf.first = sorted(shelf.first, shelf.blocks);
    }
}

void CKeptMemory::releaseAll() {
    for (Shelf& shelf : shelves)
        releaseBlocks(shelf, shelf.blocks);
    shelves = {};
    isFull = false;
}

}  // namespace qmx
