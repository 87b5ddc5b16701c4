#include <gtest/gtest.h>

#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitDecoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/CBitLazyWriter.h"
#include "coding/decode/IWaveletDecoder.h"
#include "coding/encode/IWaveletEncoder.h"
#include "support/VirtualSlot.h"
#include "wavelet/CFilter.h"

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

TEST(VirtualSlots, Filters) {
    EXPECT_EQ(slotOf(&CFilter<short>::transform), 2U);
    EXPECT_EQ(slotOf(&CFilter<short>::untransform), 3U);
    EXPECT_EQ(slotOf(&CFilter<short>::transformMul), 4U);
    EXPECT_EQ(slotOf(&CFilter<short>::untransformMul), 5U);
}

TEST(VirtualSlots, WaveletInterfaces) {
    EXPECT_EQ(slotOf(&IWaveletEncoder::transform), 2U);
    EXPECT_EQ(slotOf(&IWaveletEncoder::writeWavelet), 3U);
    EXPECT_EQ(slotOf(&IWaveletEncoder::stop), 4U);
    EXPECT_EQ(slotOf(&IWaveletEncoder::kill), 5U);
    EXPECT_EQ(slotOf(&IWaveletDecoder::untransform), 2U);
    EXPECT_EQ(slotOf(&IWaveletDecoder::readWavelet), 3U);
    EXPECT_EQ(slotOf(&IWaveletDecoder::convertAndCopyToT), 4U);
    EXPECT_EQ(slotOf(&IWaveletDecoder::stop), 5U);
    EXPECT_EQ(slotOf(&IWaveletDecoder::kill), 6U);
}

}  // namespace
