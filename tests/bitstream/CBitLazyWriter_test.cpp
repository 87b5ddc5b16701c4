#include "bitstream/CBitLazyWriter.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <limits>
#include <new>

#include "bitstream/BitTestSupport.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitLazyWriter;
using qmx::kThrownEndOfStream;
using test::Bits;
using test::Bytes;

/// A writer whose block comes only after some attempts, and which notes what it was asked for.
class CountingLazyWriter : public CBitLazyWriter {
public:
    CountingLazyWriter(std::uint64_t sizeBytes, int attemptsThatFail = 0)
        : CBitLazyWriter(sizeBytes, true), failures(attemptsThatFail) {}
    void* allocateBlock(std::uint64_t sizeBytes) override {
        asked.push_back(sizeBytes);
        return failures-- > 0 ? nullptr : CBitLazyWriter::allocateBlock(sizeBytes);
    }

    std::uint64_t size() const { return blockSize; }

    std::vector<std::uint64_t> asked;

private:
    int failures;
};

Bytes blockOf(const CBitLazyWriter& writer, std::size_t sizeBytes) {
    return {writer.getBlock(), writer.getBlock() + sizeBytes};
}

TEST(CBitLazyWriter, TakesItsBlockWithTheFirstBit) {
    CountingLazyWriter writer(24);
    writer.writeInt(7, 0);
    writer.flush();
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(writer.getBlock(), nullptr);
    EXPECT_TRUE(writer.asked.empty());
    writer.writeBit(1);
    EXPECT_EQ(writer.getTotal(), 1U);
    EXPECT_NE(writer.getBlock(), nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(writer.getBlock()) % 8, 0U);
    EXPECT_EQ(writer.asked, std::vector<std::uint64_t>{24});
}

TEST(CBitLazyWriter, FillsBlocksOfAnySizeToTheirLastBitAndTakesNoSecondOne) {
    for (std::size_t size = 1; size <= 40; ++size) {
        SCOPED_TRACE(size);
        const Bits bits = test::randomBits(8 * size, size);
        CountingLazyWriter writer(size);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            ASSERT_EQ(writer.getTotal(), i);
            writer.writeInt(bits[i] ? 1 : 0, 1);
        }
        EXPECT_EQ(test::thrownBy([&] { writer.writeInt(1, 1); }), kThrownEndOfStream);
        EXPECT_EQ(writer.getTotal(), 8 * size);
        EXPECT_TRUE(test::sameBytes(test::packed(bits), blockOf(writer, size)));
        EXPECT_EQ(writer.asked, std::vector<std::uint64_t>{size});
    }
}

TEST(CBitLazyWriter, FirstFieldMayFillTheWholeBlockOrMore) {
    for (std::size_t size = 1; size <= 9; ++size) {
        CBitLazyWriter writer(size, true);
        const std::uint64_t value = 0xFEDCBA9876543211;
        const int thrown = test::thrownBy([&] { writer.writeInt(value, 64); });
        EXPECT_EQ(thrown, size < 8 ? kThrownEndOfStream : 0);
        EXPECT_EQ(writer.getTotal(), std::min<std::size_t>(64, 8 * size));
        Bits bits;
        test::append(bits, {value, 64});
        const std::size_t known = std::min<std::size_t>(8, size);
        EXPECT_TRUE(test::sameBytes(test::packed(bits, known), blockOf(writer, known)));
    }
}

TEST(CBitLazyWriter, SizeSetBeforeTheFirstBitIsTheSizeOfTheBlock) {
    CountingLazyWriter writer(1);
    writer.setSize(1000);
    writer.setSize(24);
    for (int i = 0; i < 192; ++i)
        writer.writeBit(1);
    EXPECT_EQ(writer.asked, std::vector<std::uint64_t>{24});
    EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 192U);
    EXPECT_TRUE(test::sameBytes(Bytes(24, 0xFF), blockOf(writer, 24)));
}

TEST(CBitLazyWriter, SizeSetAfterTheFirstBitChangesNothing) {
    CountingLazyWriter writer(3);
    writer.writeBit(1);
    writer.setSize(100);
    EXPECT_EQ(writer.size(), 3U);
    writer.writeInt(0, 23);
    EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 24U);
    EXPECT_EQ(writer.asked, std::vector<std::uint64_t>{3});
}

TEST(CBitLazyWriter, EmptyBlockKeepsTheFirstBitAndDropsTheOthersInSilence) {  // Quirk 1
    CBitLazyWriter writer(0, true);
    for (std::uint64_t count = 1; count <= 63; ++count) {
        EXPECT_EQ(test::thrownBy([&] { writer.writeBit(count & 1); }), 0);
        EXPECT_EQ(writer.getTotal(), count);
    }
    for (int i = 0; i < 1000; ++i) {
        EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), 0);
        EXPECT_EQ(writer.getTotal(), std::numeric_limits<std::uint64_t>::max());
    }
    writer.flush();
    EXPECT_NE(writer.getBlock(), nullptr);
}

TEST(CBitLazyWriter, EmptyBlockDropsFieldsLikeBits) {
    for (int first = 1; first <= 64; ++first) {
        CBitLazyWriter writer(0, true);
        const auto most = std::numeric_limits<std::uint64_t>::max();
        EXPECT_EQ(test::thrownBy([&] { writer.writeInt(most, first); }), 0);
        EXPECT_EQ(writer.getTotal(), first < 64 ? static_cast<std::uint64_t>(first) : most);
        for (int i = 0; i < 10; ++i)
            EXPECT_EQ(test::thrownBy([&] { writer.writeInt(most, 64); }), 0);
        EXPECT_EQ(writer.getTotal(), most);
        writer.flush();
    }
}

TEST(CBitLazyWriter, SizeMayBeSetInPlaceOfAnEmptyBlock) {
    CBitLazyWriter writer(0, true);
    writer.setSize(1);
    writer.writeInt(0xA7, 8);
    EXPECT_EQ(test::thrownBy([&] { writer.writeBit(0); }), kThrownEndOfStream);
    EXPECT_EQ(blockOf(writer, 1), Bytes{0xA7});
}

TEST(CBitLazyWriter, BlockThatCannotBeHadThrowsBadAlloc) {
    CountingLazyWriter writer(8, 2);
    EXPECT_THROW(writer.writeBit(1), std::bad_alloc);
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(writer.getBlock(), nullptr);
    EXPECT_THROW(writer.writeInt(5, 12), std::bad_alloc);
    EXPECT_EQ(writer.getTotal(), 0U);
}

TEST(CBitLazyWriter, BitWhoseBlockCouldNotBeHadLeavesNoTrace) {
    CountingLazyWriter writer(8, 1);
    EXPECT_THROW(writer.writeBit(1), std::bad_alloc);
    writer.writeInt(0, 64);
    EXPECT_TRUE(test::sameBytes(Bytes(8, 0), blockOf(writer, 8)));
    EXPECT_EQ(writer.asked, (std::vector<std::uint64_t>{8, 8}));
}

TEST(CBitLazyWriter, BlockIsTheCallersUnlessTheWriterOwnsIt) {
    unsigned char* block = nullptr;
    {
        CBitLazyWriter writer(16, false);
        writer.writeInt(0x1234, 16);
        writer.flush();
        block = writer.getBlock();
    }
    EXPECT_EQ(block[0], 0x34);
    EXPECT_EQ(block[1], 0x12);
    std::free(block);
}

TEST(CBitLazyWriter, BlocksMayBeTakenAndGivenBackByHand) {
    CBitLazyWriter writer(0, true);
    void* block = writer.allocateBlock(100);
    ASSERT_NE(block, nullptr);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % 8, 0U);
    EXPECT_EQ(writer.getBlock(), nullptr);
    writer.deleteBlock(block);
}

}  // namespace
