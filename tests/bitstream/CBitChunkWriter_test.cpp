#include "bitstream/CBitChunkWriter.h"

#include <gtest/gtest.h>
#include <memory>
#include <pthread.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitChunkWriter;
using qmx::CBitWriter;
using test::Bits;
using test::Bytes;

/// Bits of the first chunks of a writer together: each has twice as many as the one before it, up to a limit.
constexpr std::uint64_t bitsOfChunks(int count) {
    std::uint64_t words = 0;
    for (int i = 0, next = qmx::kFirstChunkWords; i < count; ++i) {
        words += static_cast<std::uint64_t>(next);
        next = std::min(2 * next, qmx::kMostChunkWords);
    }
    return 64 * words;
}
static_assert(bitsOfChunks(3) == 64 * (64 + 128 + 256));
static_assert(bitsOfChunks(9) - bitsOfChunks(7) == 2 * 64 * 4096);

/// Copies the first nbits bits behind the given ones into a buffer of exactly the right size.
Bytes copied(CBitChunkWriter& source, std::uint64_t nbits, std::uint64_t expectedBits) {
    Bytes bytes((expectedBits + 7) / 8);
    CBitWriter destination(bytes.data(), bytes.size());
    EXPECT_EQ(source.writeBitsTo(&destination, nbits), expectedBits);
    EXPECT_EQ(destination.getTotal(), expectedBits);
    destination.flush();
    return bytes;
}

TEST(CBitChunkWriter, CountsAMillionBitsAcrossItsChunks) {
    CBitChunkWriter writer;
    EXPECT_EQ(writer.getTotal(), 0U);
    for (std::uint64_t i = 0; i < 1000000; ++i) {
        writer.writeBit(i & 1);
        ASSERT_EQ(writer.getTotal(), i + 1);
    }
    EXPECT_GT(writer.getTotal(), bitsOfChunks(8));
    EXPECT_TRUE(test::sameBytes(Bytes(125000, 0xAA), copied(writer, 0, 1000000)));
}

TEST(CBitChunkWriter, CopiesWhatItHoldsAtEveryFillOfAChunk) {
    for (int chunks : {1, 2, 3, 7, 8})
        for (std::uint64_t past : {0U, 1U, 2U, 63U, 64U, 65U, 131U}) {
            const std::uint64_t count = bitsOfChunks(chunks) - 65 + past;
            const Bits bits = test::randomBits(count, past);
            CBitChunkWriter writer;
            test::writeBits(writer, bits);
            EXPECT_TRUE(test::sameBytes(test::packed(bits), copied(writer, 0, count))) << count;
        }
}

TEST(CBitChunkWriter, CountZeroCopiesEverythingAndOtherCountsAtMostTheTotal) {
    const Bits bits = test::randomBits(300, 7);
    CBitChunkWriter writer;
    test::writeBits(writer, bits);
    for (std::uint64_t count : {1U, 5U, 63U, 64U, 65U, 128U, 299U, 300U}) {
        const Bits first(bits.begin(), bits.begin() + static_cast<long>(count));
        EXPECT_TRUE(test::sameBytes(test::packed(first), copied(writer, count, count)));
    }
    EXPECT_TRUE(test::sameBytes(test::packed(bits), copied(writer, 0, 300)));
    EXPECT_TRUE(test::sameBytes(test::packed(bits), copied(writer, 301, 300)));
    EXPECT_TRUE(test::sameBytes(test::packed(bits), copied(writer, ~std::uint64_t{0}, 300)));
}

TEST(CBitChunkWriter, PrefixesMayEndOnBothSidesOfAChunkBoundary) {
    constexpr std::uint64_t kBoundary = bitsOfChunks(3);
    const Bits bits = test::randomBits(kBoundary + 100, 17);
    CBitChunkWriter writer;
    test::writeBits(writer, bits);
    for (std::uint64_t count = kBoundary - 66; count <= kBoundary + 66; count += 3) {
        const Bits first(bits.begin(), bits.begin() + static_cast<long>(count));
        ASSERT_TRUE(test::sameBytes(test::packed(first), copied(writer, count, count))) << count;
    }
}

TEST(CBitChunkWriter, EmptyWriterCopiesNothing) {
    CBitChunkWriter writer;
    writer.flush();
    CBitWriter full(nullptr, 0);
    EXPECT_EQ(writer.writeBitsTo(&full, 0), 0U);
    EXPECT_EQ(writer.writeBitsTo(&full, 9), 0U);
    EXPECT_EQ(full.getTotal(), 0U);
}

TEST(CBitChunkWriter, WritingGoesOnAfterACopy) {
    const Bits bits = test::randomBits(200, 3);
    CBitChunkWriter writer;
    for (std::size_t i = 0; i < bits.size(); ++i) {
        const Bits before(bits.begin(), bits.begin() + static_cast<long>(i));
        ASSERT_TRUE(test::sameBytes(test::packed(before), copied(writer, 0, i))) << i;
        ASSERT_EQ(writer.getTotal(), i);
        writer.writeBit(bits[i] ? 1 : 0);
    }
}

TEST(CBitChunkWriter, CopyThatDoesNotFitFillsTheDestinationToItsLastBit) {
    const Bits bits = test::randomBits(8 * 32768 + 500, 6);
    CBitChunkWriter writer;
    test::writeBits(writer, bits);
    for (std::size_t size : {0U, 1U, 8U, 13U, 32767U, 32768U, 32769U, 32829U}) {
        Bytes bytes(size);
        CBitWriter destination(bytes.data(), size);
        const int thrown = test::thrownBy([&] { writer.writeBitsTo(&destination, 0); });
        EXPECT_EQ(thrown, qmx::kThrownEndOfStream);
        EXPECT_EQ(destination.getTotal(), 8 * size);
        EXPECT_TRUE(test::sameBytes(test::packed(bits, size), bytes)) << size;
        EXPECT_EQ(writer.getTotal(), bits.size());
    }
}

TEST(CBitChunkWriter, AChunkWriterTakesTheBitsOfAnother) {
    const Bits bits = test::randomBits(bitsOfChunks(2) + 77, 2);
    CBitChunkWriter source;
    test::writeBits(source, bits);
    CBitChunkWriter destination;
    destination.writeInt(5, 3);
    EXPECT_EQ(source.writeBitsTo(&destination, 0), bits.size());
    Bits expected{true, false, true};
    expected.insert(expected.end(), bits.begin(), bits.end());
    EXPECT_TRUE(test::sameBytes(test::packed(expected), copied(destination, 0, expected.size())));
}

void* makeAndDestroyManyChunks(void* count) {
    auto writer = std::make_unique<CBitChunkWriter>();
    for (int i = 0; i < 20000; ++i)
        writer->flushBuffer();
    *static_cast<std::uint64_t*>(count) = writer->getTotal();
    return nullptr;
}

TEST(CBitChunkWriter, DestroysAVeryLongListOnASmallStack) {
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, 128 * 1024), 0);
    std::uint64_t total = 0;
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, &makeAndDestroyManyChunks, &total), 0);
    pthread_join(thread, nullptr);
    pthread_attr_destroy(&attributes);
    EXPECT_EQ(total, bitsOfChunks(19999));
}

}  // namespace
