#include "api/CBitTeskWriter.h"

#include <gtest/gtest.h>
#include <limits>
#include <new>

#include "bitstream/BitTestSupport.h"
#include "support/CodecObjects.h"
#include "support/VirtualSlot.h"

namespace {

using namespace qmx;
using test::Bits;
using test::Bytes;
using test::slotOf;
using test::thrownBy;

constexpr std::uint64_t kBound = 1000;
constexpr std::uint64_t kMost = std::numeric_limits<std::uint64_t>::max();
using Sizes = std::vector<unsigned long>;

static_assert(sizeof(CTeskHeader) == 16);

/// A compressor that is never asked to compress: its blocks are for the writers of the tests.
class TeskWriter : public testing::Test {
protected:
    /// Checks that exactly so many bits fit.
    static void expectRoom(CBitTeskWriter& writer, std::uint64_t bits) {
        for (std::uint64_t i = 0; i < bits; ++i)
            ASSERT_EQ(thrownBy([&] { writer.writeBit(1); }), 0) << "bit " << i;
        EXPECT_EQ(writer.getTotal(), bits);
        EXPECT_EQ(thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
        EXPECT_EQ(writer.getTotal(), bits);
        EXPECT_EQ(writer.getStoredBytes(), bits / 8);
        EXPECT_EQ(Bytes(writer.getBlock(), writer.getBlock() + bits / 8), Bytes(bits / 8, 0xFF));
    }

    test::RawImage image = test::makeImage(test::Content::photo, 2, 13, 5, 7);
    test::BlockLog log;
    test::LoggingCompressor owner{image, test::kAmpleBudget, true, log};
};

TEST_F(TeskWriter, TakesABlockOfTheBudgetWithTheFirstBit) {
    CBitTeskWriter writer(&owner, 40, kBound, true);
    EXPECT_EQ(writer.getHeader(), nullptr);
    EXPECT_EQ(writer.getStoredBytes(), 0U);
    EXPECT_TRUE(log.asked.empty());
    writer.writeBit(1);
    EXPECT_EQ(log.asked, Sizes{40});
    EXPECT_EQ(writer.getHeader() + 16, writer.getBlock());
    EXPECT_EQ(writer.getStoredBytes(), 1U);
}

TEST_F(TeskWriter, TheBlockBeginsWithTheHeaderOfTheCompressor) {
    CBitTeskWriter writer(&owner, 40, kBound, true);
    writer.writeBit(1);
    const Bytes header{'T', 'K', '3', '0', 2, 13, 5, 0, 7, 0, 0, 0, 0, 0, 0, 0};
    EXPECT_EQ(Bytes(writer.getHeader(), writer.getHeader() + 16), header);
}

TEST_F(TeskWriter, ABudgetHoldsTheBitsThatTheHeaderLeaves) {
    for (const std::uint64_t budget : {17U, 18U, 23U, 24U, 25U, 32U, 33U, 100U}) {
        SCOPED_TRACE(budget);
        CBitTeskWriter writer(&owner, budget, kBound, true);
        expectRoom(writer, 8 * (budget - 16));
        EXPECT_EQ(log.asked.back(), budget);
    }
}

TEST_F(TeskWriter, ABudgetOfTheHeaderDropsAllBitsInSilence) {  // Quirk 1
    CBitTeskWriter writer(&owner, 16, kBound, true);
    for (std::uint64_t count = 1; count <= 63; ++count) {
        EXPECT_EQ(thrownBy([&] { writer.writeBit(1); }), 0);
        EXPECT_EQ(writer.getTotal(), count);
        EXPECT_EQ(writer.getStoredBytes(), 0U);
    }
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(thrownBy([&] { writer.writeBit(1); }), 0);
        EXPECT_EQ(writer.getTotal(), kMost);
        EXPECT_EQ(writer.getStoredBytes(), 0U);
    }
    writer.flush();
    EXPECT_EQ(log.asked, Sizes{16});
}

TEST_F(TeskWriter, WithABudgetASizeChangesNothing) {
    CBitTeskWriter writer(&owner, 20, kBound, true);
    writer.setSize(100);
    writer.setSize(0);
    expectRoom(writer, 32);
    EXPECT_EQ(log.asked, Sizes{20});
}

TEST_F(TeskWriter, WithoutABudgetTheLastSizeBeforeTheFirstBitCounts) {  // Quirk 16
    CBitTeskWriter writer(&owner, 0, kBound, true);
    writer.setSize(100);
    writer.setSize(19);
    writer.writeBit(1);
    writer.setSize(200);
    writer.writeInt(kMost, 23);
    EXPECT_EQ(thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 24U);
    EXPECT_EQ(log.asked, Sizes{19});
}

TEST_F(TeskWriter, ASizeWithoutRoomForTheHeaderIsThatOfTheStream) {
    for (unsigned size = 1; size <= 15; ++size) {
        SCOPED_TRACE(size);
        CBitTeskWriter writer(&owner, 0, kBound, true);
        writer.setSize(size);
        expectRoom(writer, 8 * std::uint64_t{size});
        EXPECT_EQ(log.asked.back(), size + 16);
    }
}

TEST_F(TeskWriter, ASizeOfTheHeaderOrOfNothingDropsAllBits) {
    for (const unsigned size : {0U, 16U}) {
        CBitTeskWriter writer(&owner, 0, kBound, true);
        writer.setSize(size);
        EXPECT_EQ(thrownBy([&] { test::writeBits(writer, Bits(500, true)); }), 0);
        EXPECT_EQ(writer.getStoredBytes(), 0U);
        EXPECT_EQ(log.asked.back(), 16U);
    }
}

TEST_F(TeskWriter, WithoutBudgetAndSizeThereIsNoBlock) {
    CBitTeskWriter writer(&owner, 0, kBound, true);
    EXPECT_THROW(writer.writeBit(1), std::bad_alloc);
    EXPECT_THROW(writer.writeInt(3, 64), std::bad_alloc);
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(writer.getBlock(), nullptr);
    EXPECT_EQ(writer.getHeader(), nullptr);
    EXPECT_TRUE(log.asked.empty());
}

TEST_F(TeskWriter, ABoundShortensTheBlockOfALargerBudget) {
    for (const std::uint64_t budget : {std::uint64_t{27}, std::uint64_t{1} << 62, kMost}) {
        SCOPED_TRACE(budget);
        CBitTeskWriter writer(&owner, budget, 10, true);
        expectRoom(writer, 80);
        EXPECT_EQ(log.asked.back(), 26U);
    }
    CBitTeskWriter writer(&owner, 26, 10, true);
    expectRoom(writer, 80);
}

TEST_F(TeskWriter, ACompressorWithoutMemoryMakesTheFirstBitThrow) {
    log.isEmpty = true;
    {
        CBitTeskWriter writer(&owner, 40, kBound, true);
        EXPECT_THROW(writer.writeBit(1), std::bad_alloc);
        EXPECT_EQ(writer.getTotal(), 0U);
        EXPECT_EQ(writer.getHeader(), nullptr);
    }
    EXPECT_EQ(log.asked, Sizes{40});
    EXPECT_EQ(log.freed, 0);
}

TEST_F(TeskWriter, AnOwnedBlockIsReleasedOnce) {
    {
        CBitTeskWriter writer(&owner, 40, kBound, true);
        writer.writeBit(1);
        EXPECT_EQ(log.freed, 0);
        writer.releaseBlock();
        EXPECT_EQ(log.freed, 1);
        EXPECT_EQ(writer.getHeader(), nullptr);
        writer.releaseBlock();
    }
    EXPECT_EQ(log.freed, 1);
    { CBitTeskWriter(&owner, 40, kBound, true).writeBit(1); }
    EXPECT_EQ(log.freed, 2);
    { const CBitTeskWriter unused(&owner, 40, kBound, true); }
    EXPECT_EQ(log.freed, 2);
}

TEST_F(TeskWriter, ABlockThatIsNotOwnedStays) {
    unsigned char* block = nullptr;
    {
        CBitTeskWriter writer(&owner, 24, kBound, false);
        writer.writeInt(0x4321, 16);
        writer.flush();
        block = writer.getHeader();
        writer.releaseBlock();
        EXPECT_EQ(writer.getHeader(), block);
    }
    EXPECT_EQ(log.freed, 0);
    EXPECT_EQ(block[0], 'T');
    EXPECT_EQ(block[16], 0x21);
    EXPECT_EQ(block[17], 0x43);
    owner.freeBlock(block);
}

TEST_F(TeskWriter, BlocksAtAnyAddressHoldTheSameBits) {
    for (log.shift = 0; log.shift <= 9; ++log.shift) {
        SCOPED_TRACE(log.shift);
        const Bits bits = test::randomBits(8 * 45, log.shift + 1);
        CBitTeskWriter writer(&owner, 61, kBound, true);
        test::writeBits(writer, bits);
        EXPECT_EQ(thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
        const Bytes stored(writer.getBlock(), writer.getBlock() + 45);
        EXPECT_TRUE(test::sameBytes(test::packed(bits), stored));
        EXPECT_EQ(writer.getHeader()[3], '0');
        writer.releaseBlock();
    }
}

TEST(VirtualSlots, TheWriterOfACompressorSitsInTheSlotsOfLazyWriters) {
    EXPECT_EQ(slotOf(&CBitTeskWriter::setSize), 8U);
    EXPECT_EQ(slotOf(&CBitTeskWriter::allocateBlock), 9U);
    EXPECT_EQ(slotOf(&CBitTeskWriter::deleteBlock), 10U);
}

TEST(VirtualSlots, CompressorsBeginWithTheirDestructor) {
    EXPECT_EQ(slotOf(&ITeskCompressor::compress), 2U);
    EXPECT_EQ(slotOf(&ITeskCompressor::stop), 3U);
    EXPECT_EQ(slotOf(&ITeskCompressor::kill), 4U);
    EXPECT_EQ(slotOf(&ITeskCompressor::allocBlock), 5U);
    EXPECT_EQ(slotOf(&ITeskCompressor::freeBlock), 6U);
    EXPECT_EQ(slotOf(&CTeskCompressor::compress), 2U);
    EXPECT_EQ(slotOf(&CTeskCompressor::freeBlock), 6U);
}

TEST(VirtualSlots, DecompressorsBeginWithTheGeometry) {
    EXPECT_EQ(slotOf(&ITeskDecompressor::getBytesPerPixel), 0U);
    EXPECT_EQ(slotOf(&ITeskDecompressor::getBitsPerPixel), 1U);
    EXPECT_EQ(slotOf(&ITeskDecompressor::getXSize), 2U);
    EXPECT_EQ(slotOf(&ITeskDecompressor::getYSize), 3U);
    EXPECT_EQ(slotOf(&ITeskDecompressor::decompress), 6U) << "the destructor takes 4 and 5";
    EXPECT_EQ(slotOf(&ITeskDecompressor::stop), 7U);
    EXPECT_EQ(slotOf(&ITeskDecompressor::kill), 8U);
    EXPECT_EQ(slotOf(&CTeskDecompressor::decompress), 6U);
}

}  // namespace
