#include <gtest/gtest.h>

#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/CBitLazyWriter.h"
#include "support/VirtualSlot.h"

namespace {

using namespace qmx;
using test::slotOf;

TEST(VirtualSlots, AllStreamsBeginWithTheRootOperations) {
    EXPECT_EQ(slotOf(&CBitStreamer::getType), 2U);
    EXPECT_EQ(slotOf(&CBitStreamer::getMode), 3U);
    EXPECT_EQ(slotOf(&CBitStreamer::getCode), 4U);
    EXPECT_EQ(slotOf(&CBitStreamer::getTotal), 5U);
    EXPECT_EQ(slotOf(&CBitStreamer::getStoredTotal), 6U);
    EXPECT_EQ(slotOf(&CBitDecoder::getStoredTotal), 6U);
}

TEST(VirtualSlots, WritersThenReadersAddTheirOwn) {
    EXPECT_EQ(slotOf(&CBitWriter::flushBuffer), 7U);
    EXPECT_EQ(slotOf(&CBitWriter::setSize), 8U);
    EXPECT_EQ(slotOf(&CBitChunkWriter::flushBuffer), 7U);
    EXPECT_EQ(slotOf(&CBitLazyWriter::allocateBlock), 9U);
    EXPECT_EQ(slotOf(&CBitLazyWriter::deleteBlock), 10U);
    EXPECT_EQ(slotOf(&CBitReader::fetch), 7U);
    EXPECT_EQ(slotOf(&CBitReader::create), 8U);
    EXPECT_EQ(slotOf(&CBitInfiniteReader::create), 8U);
}

}  // namespace
