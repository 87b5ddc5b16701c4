#pragma once

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <new>

namespace qmx {

/// Memory that is released all at once. Small pieces come out of blocks: a small picture needs a hundred of
/// them, and asking for each by itself takes longer than filling it.
class CMemoryPool {
public:
    /// Requires: blockMemory outlives the pool.
    explicit CMemoryPool(std::pmr::memory_resource* blockMemory) : memory(blockMemory) {}
    CMemoryPool(const CMemoryPool&) = delete;
    CMemoryPool& operator=(const CMemoryPool&) = delete;
    ~CMemoryPool() { release(); }

    /// Returns: sizeBytes bytes, uninitialised. Requires: a multiple of 8. Throws: std::bad_alloc.
    void* take(std::size_t sizeBytes) {
        if (sizeBytes > kBlockBytes / 4) return addBlock(sizeBytes);
        if (sizeBytes > left) {
            next = addBlock(kBlockBytes);
            left = kBlockBytes;
        }
        left -= sizeBytes;
        return next + left;
    }
    /// Releases all that was taken.
    void release() {
        while (blocks != nullptr) {
            Block* const block = blocks;
            blocks = block->next;
            memory->deallocate(block, sizeof(Block) + block->sizeBytes, alignof(Block));
        }
        left = 0;
    }

private:
    static constexpr std::size_t kBlockBytes = 4096;
    struct alignas(std::uint64_t) Block {
        Block* next;
        std::size_t sizeBytes;
    };

    unsigned char* addBlock(std::size_t sizeBytes) {
        void* const bytes = memory->allocate(sizeof(Block) + sizeBytes, alignof(Block));
        blocks = ::new (bytes) Block{blocks, sizeBytes};
        return reinterpret_cast<unsigned char*>(blocks + 1);
    }

    std::pmr::memory_resource* memory;
    Block* blocks = nullptr;
    unsigned char* next = nullptr;
    std::size_t left = 0;
};

}  // namespace qmx
