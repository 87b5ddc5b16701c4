#pragma once

#include <memory>

namespace qmx {

/// One node of a singly linked list of word arrays. Owns: its words and all nodes after it.
template <class T>
struct CMemChunk {
    /// The first node of a list is its own head. Throws: std::bad_alloc.
    explicit CMemChunk(int wordCount)
        : head(this),
          data(std::make_unique_for_overwrite<T[]>(static_cast<std::size_t>(wordCount))),
          words(wordCount) {}

    /// Destroys the nodes after this one in a loop: a list of many chunks must not need a deep
    /// stack.
    ~CMemChunk() {
        while (next != nullptr)
            next = std::move(next->next);
    }
    CMemChunk(const CMemChunk&) = delete;
    CMemChunk& operator=(const CMemChunk&) = delete;

    /// Appends a node of the same size. Requires: this is the last node. Returns: the new node.
    CMemChunk* append() {
        next = std::make_unique<CMemChunk>(words);
        next->head = head;
        return next.get();
    }

    CMemChunk* head;
    std::unique_ptr<CMemChunk> next;
    std::unique_ptr<T[]> data;
    int words;
};

}  // namespace qmx
