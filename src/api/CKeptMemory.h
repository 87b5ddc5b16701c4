#pragma once

#include <array>
#include <cstddef>

namespace qmx {

/// The caller's allocator, or malloc and free.
struct AllocatorHooks {
    void* (*allocate)(void* user, std::size_t sizeBytes);
    void (*release)(void* user, void* memory);
    void* user;
};

/// Returns: hooks that go to malloc and free.
AllocatorHooks defaultHooks();

/// The memory that a codec keeps from call to call. Calls on like images ask for blocks of the same sizes: they
/// get the blocks of the calls before, whose pages are there already.
class CKeptMemory {
public:
    /// mostBytes: the most that is kept; 0 keeps nothing. Requires: hooks work until this object ends.
    CKeptMemory(const AllocatorHooks& allocatorHooks, std::size_t mostBytes)
        : hooks(allocatorHooks), most(mostBytes) {}
    CKeptMemory(const CKeptMemory&) = delete;
    CKeptMemory& operator=(const CKeptMemory&) = delete;
    ~CKeptMemory() { releaseAll(); }

    /// Returns: a block of exactly that size, kept or new; null without memory, also when all that was kept has
    /// been given back. roomBytes: what the blocks that are kept and the new one may come to; those that are
    /// kept go before it is more. Requires: sizeBytes is neither 0 nor more than roomBytes.
    void* take(std::size_t sizeBytes, std::size_t roomBytes);
    /// Keeps a block, or gives it back. Requires: it is from take, with that size.
    void give(void* block, std::size_t sizeBytes);
    /// Says that a call has ended: what the last two calls did not use goes back to the allocator.
    void endCall();
    void releaseAll();

    /// Returns: bytes of the blocks that nobody uses now.
    std::size_t bytes() const { return kept; }

private:
    struct Block {
        Block* next;
    };
    /// Blocks of one size.
    struct Shelf {
        std::size_t sizeBytes = 0;
        Block* first = nullptr;
        std::size_t blocks = 0;
        /// The fewest blocks that stood there, during this call and during the one before: nobody needed those.
        std::size_t spareNow = 0;
        std::size_t spareBefore = 0;
    };
    /// When calls ask for more sizes, all that is kept goes back.
    static constexpr std::size_t kShelves = 128;

    /// Returns: the shelf of a size, which may be a new one; null when all are taken.
    Shelf* shelfOf(std::size_t sizeBytes);
    /// Returns: the first count blocks of a list, by their addresses.
    static Block* sorted(Block* first, std::size_t count);
    void releaseBlocks(Shelf& shelf, std::size_t count);

    AllocatorHooks hooks;
    std::size_t most;
    std::size_t kept = 0;
    bool isFull = false;
    /// Found by their size, with open addresses: those of one size stand at its place or behind it.
    std::array<Shelf, kShelves> shelves{};
};

}  // namespace qmx
