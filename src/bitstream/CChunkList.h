#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <new>

namespace qmx {

/// 64-bit words in the first chunk, 512 bytes, unless it is told another number. Each further chunk has twice
/// as many as the one before it, up to 32 KiB. Implementation limits, not part of a stream.
inline constexpr int kFirstChunkWords = 64;
inline constexpr int kMostChunkWords = 4096;

/// Words behind the end of each chunk that batches may write into before the end is noticed.
inline constexpr int kSlackWords = 8;

/// One node of a list of word arrays. Its words and the slack behind them follow it in its block.
struct alignas(std::uint64_t) MemChunk {
    /// Returns: bytes of the block of a chunk.
    static std::size_t blockBytes(int words) {
        return sizeof(MemChunk) +
               (static_cast<std::size_t>(words) + kSlackWords) * sizeof(std::uint64_t);
    }
    /// Returns: a chunk that nothing follows, its words uninitialised. Requires: the block has its bytes.
    static MemChunk* make(void* block, int words) { return ::new (block) MemChunk{nullptr, words}; }

    std::uint64_t* data() { return reinterpret_cast<std::uint64_t*>(this + 1); }

    MemChunk* next;
    int words;
};
static_assert(sizeof(MemChunk) % sizeof(std::uint64_t) == 0);

/// Owns: a singly linked list of chunks.
class CChunkList {
public:
    CChunkList() = default;
    CChunkList(const CChunkList&) = delete;
    CChunkList& operator=(const CChunkList&) = delete;
    /// In a loop: a list of many chunks must not need a deep stack.
    ~CChunkList() {
        while (head != nullptr) {
            MemChunk* const rest = head->next;
            memory->deallocate(head, MemChunk::blockBytes(head->words), alignof(MemChunk));
            head = rest;
        }
    }

    /// Takes chunks from chunkMemory instead of from new. Requires: the list is empty; chunkMemory
    /// outlives it.
    void useMemory(std::pmr::memory_resource* chunkMemory) { memory = chunkMemory; }

    /// Appends a chunk of wordCount words, uninitialised. Throws: std::bad_alloc.
    void append(int wordCount) {
        const std::size_t bytes = MemChunk::blockBytes(wordCount);
        MemChunk* const chunk =
            MemChunk::make(memory->allocate(bytes, alignof(MemChunk)), wordCount);
        (tail == nullptr ? head : tail->next) = chunk;
        tail = chunk;
    }

    /// Null while the list is empty.
    MemChunk* first() const { return head; }
    MemChunk* last() const { return tail; }

private:
    MemChunk* head = nullptr;
    MemChunk* tail = nullptr;
    std::pmr::memory_resource* memory = std::pmr::new_delete_resource();
};

}  // namespace qmx
