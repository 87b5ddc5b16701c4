#include "bitstream/CChunkList.h"

#include <gtest/gtest.h>

#include "support/GuardedHeap.h"

namespace {

using qmx::CChunkList;
using qmx::MemChunk;

TEST(CChunkList, IsEmptyAtFirst) {
    const CChunkList list;
    EXPECT_EQ(list.first(), nullptr);
    EXPECT_EQ(list.last(), nullptr);
}

TEST(CChunkList, ChunksFollowEachOtherAndKnowTheirSize) {
    CChunkList list;
    list.append(10);
    MemChunk* const first = list.first();
    EXPECT_EQ(list.last(), first);
    list.append(20);
    list.append(10);
    EXPECT_EQ(list.first(), first);
    MemChunk* const second = first->next;
    EXPECT_EQ(second->next, list.last());
    EXPECT_EQ(list.last()->next, nullptr);
    EXPECT_EQ(first->words, 10);
    EXPECT_EQ(second->words, 20);
    EXPECT_EQ(list.last()->words, 10);
}

TEST(CChunkList, AllWordsAndTheSlackAreThere) {
    test::GuardedHeap heap(test::Side::atEnd);
    CChunkList list;
    list.useMemory(&heap);
    for (const int words : {1, 16, 4096}) {
        list.append(words);
        for (int i = 0; i < words + qmx::kSlackWords; ++i)
            list.last()->data()[i] = ~std::uint64_t{0};
    }
    EXPECT_EQ(list.first()->words, 1) << "the words of a chunk are not those of another";
}

}  // namespace
