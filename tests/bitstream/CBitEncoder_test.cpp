#include "bitstream/CBitEncoder.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitChunkEncoder;
using qmx::CBitEncoder;
using test::Bytes;

/// Returns: the bits that the encoder has written, as bytes.
Bytes writtenBy(CBitChunkEncoder& encoder) {
    Bytes bytes((encoder.getStoredTotal() + 7) / 8);
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    encoder.writer().writeBitsTo(&writer, 0);
    writer.flush();
    return bytes;
}

TEST(CBitEncoder, CountsSourceBitsAndStoredBits) {
    CBitChunkEncoder encoder;
    EXPECT_EQ(encoder.getTotal(), 0U);
    EXPECT_EQ(encoder.getStoredTotal(), 0U);
    encoder.encodeOne(0);
    EXPECT_EQ(encoder.getTotal(), 1U);
    EXPECT_EQ(encoder.getStoredTotal(), 1U);
    encoder.encodeOne(5);
    EXPECT_EQ(encoder.getTotal(), 7U);
    EXPECT_EQ(encoder.getStoredTotal(), 7U);
    encoder.setRun(3);
    EXPECT_EQ(encoder.getRun(), 3U);
    EXPECT_EQ(encoder.getTotal(), 10U);
    EXPECT_EQ(encoder.getStoredTotal(), 7U);
}

TEST(CBitEncoder, AOneBitEndsTheRunThatIsKept) {
    CBitChunkEncoder encoder;
    encoder.setRun(4);
    encoder.encodeOne(encoder.getRun());
    EXPECT_EQ(encoder.getRun(), 0U);
    EXPECT_EQ(encoder.getTotal(), 5U);
}

TEST(CBitEncoder, WritesTheCodesOfItsRuns) {
    CBitChunkEncoder encoder;
    // 1 01 0010 0011 000100
    for (std::uint64_t run : {0U, 1U, 2U, 3U, 4U})
        encoder.encodeOne(run);
    EXPECT_EQ(encoder.getStoredTotal(), 17U);
    EXPECT_TRUE(test::sameBytes({0x25, 0x46, 0x00}, writtenBy(encoder)));
}

TEST(CBitEncoder, RawBitsMayStandBetweenTheCodes) {
    CBitChunkEncoder encoder;
    encoder.encodeOne(1);
    encoder.writer().writeBit(1);
    encoder.encodeOne(0);
    EXPECT_EQ(encoder.getTotal(), 3U);
    EXPECT_EQ(encoder.getStoredTotal(), 4U);
    EXPECT_TRUE(test::sameBytes({0x0E}, writtenBy(encoder)));
}

TEST(CBitEncoder, TerminateSendsTheTrailingZerosOnceAndFreezesTheTotal) {
    CBitChunkEncoder encoder;
    encoder.encodeOne(2);
    encoder.setRun(3);
    for (int i = 0; i < 3; ++i) {
        encoder.terminate();
        EXPECT_EQ(encoder.getTotal(), 6U);
        EXPECT_EQ(encoder.getStoredTotal(), 8U);
        EXPECT_EQ(encoder.getRun(), 0U);
    }
    encoder.setRun(100);
    EXPECT_EQ(encoder.getTotal(), 6U);
    EXPECT_TRUE(test::sameBytes({0xC4}, writtenBy(encoder)));
}

TEST(CBitEncoder, TerminateSendsAnEmptyTrailingRunAsWell) {
    CBitChunkEncoder encoder;
    encoder.encodeOne(0);
    encoder.terminate();
    EXPECT_EQ(encoder.getStoredTotal(), 2U);
    EXPECT_TRUE(test::sameBytes({0x03}, writtenBy(encoder)));
}

TEST(CBitEncoder, TerminateLeavesAStreamWithoutOneBitsEmpty) {
    CBitChunkEncoder encoder;
    encoder.setRun(1000);
    encoder.terminate();
    EXPECT_EQ(encoder.getStoredTotal(), 0U);
    EXPECT_EQ(encoder.getTotal(), 1000U);
    EXPECT_EQ(encoder.getRun(), 0U);
}

TEST(CBitEncoder, PassesOnWhatTheWriterThrows) {
    qmx::CBitWriter full(nullptr, 0);
    CBitEncoder encoder(&full);
    EXPECT_EQ(test::thrownBy([&] { encoder.encodeOne(7); }), qmx::kThrownEndOfStream);
    EXPECT_EQ(encoder.getStoredTotal(), 0U);
}

TEST(CBitEncoder, EachChunkEncoderWritesIntoItsOwnChunks) {
    CBitChunkEncoder one;
    CBitChunkEncoder other;
    one.encodeOne(3);
    EXPECT_EQ(one.writer().getTotal(), 4U);
    EXPECT_EQ(other.writer().getTotal(), 0U);
    EXPECT_NE(&one.writer(), &other.writer());
}

TEST(CBitEncoder, ManyRunsTakeAsManyBitsAsTheirCodes) {
    CBitChunkEncoder encoder;
    std::uint64_t source = 0;
    std::uint64_t stored = 0;
    for (std::uint64_t run = 0; run < 20000; ++run) {
        encoder.encodeOne(run);
        source += run + 1;
        stored += run == 0 ? 1 : 2 * static_cast<std::uint64_t>(qmx::bitLength(run));
        ASSERT_EQ(encoder.getTotal(), source);
        ASSERT_EQ(encoder.getStoredTotal(), stored);
    }
}

}  // namespace
