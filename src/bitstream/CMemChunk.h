#pragma once

#include "bitstream/Memory.h"

namespace qmx {

/// Words behind the end of each chunk that batches may write into before the end is noticed.
inline constexpr int kSlackWords = 8;

/// One node of a singly linked list of word arrays. Owns: its words, the slack behind them and all
/// nodes after it.
template <class T>
struct CMemChunk {
    /// The first node of a list is its own head. Requires: chunkMemory outlives the list.
    /// Throws: std::bad_alloc.
    CMemChunk(int wordCount, std::pmr::memory_resource* chunkMemory)
        : head(this),
          data(makeArray<T>(static_cast<std::size_t>(wordCount) + kSlackWords, chunkMemory)),
          words(wordCount),
          memory(chunkMemory) {}

    /// Destroys the nodes after this one in a loop: a list of many chunks must not need a deep
    /// stack.
    ~CMemChunk() {
        while (next != nullptr) {
            // By way of a local: an owner must not be moved from while its own node goes.
            auto rest = std::move(next->next);
            next = std::move(rest);
        }
    }
    CMemChunk(const CMemChunk&) = delete;
    CMemChunk& operator=(const CMemChunk&) = delete;

    /// Appends a node of wordCount words. Requires: this is the last node. Returns: the new node.
    CMemChunk* append(int wordCount) {
        next = makeObject<CMemChunk>(memory, wordCount, memory);
        next->head = head;
        return next.get();
    }

    CMemChunk* head;
    MemoryObject<CMemChunk> next;
    MemoryArray<T> data;
    int words;
    std::pmr::memory_resource* memory;
};

}  // namespace qmx
