#include "bitstream/CMemoryPool.h"

#include <cstdint>
#include <cstring>
#include <gtest/gtest.h>
#include <new>
#include <vector>

namespace {

using qmx::CMemoryPool;

/// Counts what is taken and not given back.
class CountingResource final : public std::pmr::memory_resource {
public:
    std::size_t blocks = 0;
    std::size_t bytes = 0;
    std::size_t mostBytes = ~std::size_t{0};

private:
    void* do_allocate(std::size_t size, std::size_t alignment) override {
        if (size > mostBytes - bytes) throw std::bad_alloc();
        ++blocks;
        bytes += size;
        return std::pmr::new_delete_resource()->allocate(size, alignment);
    }
    void do_deallocate(void* storage, std::size_t size, std::size_t alignment) override {
        --blocks;
        bytes -= size;
        std::pmr::new_delete_resource()->deallocate(storage, size, alignment);
    }
    bool do_is_equal(const memory_resource& other) const noexcept override {
        return this == &other;
    }
};

TEST(CMemoryPool, PiecesOfAllSizesStandApart) {
    CountingResource memory;
    CMemoryPool pool(&memory);
    std::vector<std::pair<unsigned char*, std::size_t>> pieces;
    for (std::size_t i = 0; i < 500; ++i) {
        const std::size_t bytes = 8 * (1 + i * 37 % 300);
        auto* piece = static_cast<unsigned char*>(pool.take(bytes));
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(piece) % 8, 0U);
        std::memset(piece, static_cast<int>(i % 256), bytes);
        pieces.emplace_back(piece, bytes);
    }
    for (std::size_t i = 0; i < pieces.size(); ++i)
        for (std::size_t k = 0; k < pieces[i].second; ++k)
            ASSERT_EQ(pieces[i].first[k], i % 256);
}

TEST(CMemoryPool, SmallPiecesShareABlockAndLargeOnesHaveTheirOwn) {
    CountingResource memory;
    CMemoryPool pool(&memory);
    EXPECT_EQ(memory.blocks, 0U);
    for (int i = 0; i < 8; ++i)
        pool.take(200);
    EXPECT_EQ(memory.blocks, 1U);
    pool.take(1 << 20);
    EXPECT_EQ(memory.blocks, 2U);
    pool.take(200);
    EXPECT_EQ(memory.blocks, 2U);
}

TEST(CMemoryPool, AllIsReleasedAtOnceAndAtTheEnd) {
    CountingResource memory;
    {
        CMemoryPool pool(&memory);
        for (int i = 0; i < 100; ++i)
            pool.take(200);
        pool.release();
        EXPECT_EQ(memory.bytes, 0U);
        pool.take(200);
        EXPECT_EQ(memory.blocks, 1U);
    }
    EXPECT_EQ(memory.bytes, 0U);
}

TEST(CMemoryPool, WhatWasTakenStaysWhenThereIsNoMore) {
    CountingResource memory;
    CMemoryPool pool(&memory);
    pool.take(200);
    memory.mostBytes = memory.bytes;
    EXPECT_THROW(pool.take(1 << 20), std::bad_alloc);
    EXPECT_NO_THROW(pool.take(200));
}

}  // namespace
