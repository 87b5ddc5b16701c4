#include <gtest/gtest.h>
#include <limits>

#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "support/LibraryCodec.h"
#include "support/Planes.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::samplesOf;

/// A one-plane photograph, transformed and ready to be coded.
class Suspension : public testing::Test {
protected:
    static constexpr int kSide = 48;

    Suspension() { reset(); }

    void reset() {
        encoder.reset();
        test::readPlanes<short, unsigned char>(image, photo);
        encoder = std::make_unique<CWaveletEncoder<short>>(&image, &filter, false);
        encoder->transform();
        coefficients = samplesOf(image);
    }
    Bytes written() {
        writer.flush();
        return {room.begin(), room.begin() + static_cast<std::ptrdiff_t>(writer.getTotal() / 8)};
    }

    test::RawImage photo = test::makeImage(test::Content::photo, 1, 8, kSide, kSide);
    Bytes complete = test::encode(photo);
    CImageData<short> image{kSide, kSide, 1};
    CFilter5_3<short> filter;
    std::unique_ptr<CWaveletEncoder<short>> encoder;
    std::vector<short> coefficients;
    Bytes room = Bytes(1 << 16);
    CBitWriter writer{room.data(), room.size()};
};

TEST_F(Suspension, AnEncoderGoesOnBehindTheRowWhereItStopped) {
    EXPECT_EQ(encoder->writeWavelet(writer, -5), kSuspended);
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(encoder->writeWavelet(writer, -20), kSuspended);
    EXPECT_EQ(encoder->writeWavelet(writer, -5), kComplete);
    const Bytes stream = written();
    EXPECT_TRUE(std::equal(stream.begin(), stream.end(), complete.begin() + 16));
}

TEST_F(Suspension, StopSuspendsAnEncoderAfterEachRequestedRow) {
    for (int row = 0; row < kSide; ++row) {
        encoder->stop();
        EXPECT_EQ(encoder->writeWavelet(writer, 0), kSuspended) << row;
    }
    EXPECT_EQ(encoder->writeWavelet(writer, 0), kComplete);
    const Bytes stream = written();
    EXPECT_TRUE(std::equal(stream.begin(), stream.end(), complete.begin() + 16));
}

TEST_F(Suspension, AKilledEncoderNeverCompletes) {
    encoder->kill();
    for (int call = 0; call < 3 * kSide; ++call)
        EXPECT_EQ(encoder->writeWavelet(writer, 0), kSuspended) << call;
    EXPECT_EQ(writer.getTotal(), 0U);
}

TEST_F(Suspension, ARowThatTheImageLacksNeverSuspends) {
    EXPECT_EQ(encoder->writeWavelet(writer, -kSide), kComplete);
    reset();
    CBitChunkWriter other;
    EXPECT_EQ(encoder->writeWavelet(other, std::numeric_limits<int>::min()), kComplete);
}

TEST_F(Suspension, ADecoderGoesOnBehindTheRowWhereItStopped) {
    CBitReader reader(complete.data() + 16, complete.size() - 16);
    CImageData<short> back(kSide, kSide, 1);
    CWaveletDecoder<short> decoder(&back, &filter, false);
    EXPECT_EQ(decoder.readWavelet(reader, -7), kSuspended);
    for (int r = 8; r < kSide; ++r)
        for (int c = 0; c < kSide; ++c)
            ASSERT_EQ(back.row(0, r)[c], 0) << "rows that were not reached are defined";
    decoder.stop();
    EXPECT_EQ(decoder.readWavelet(reader, 0), kSuspended);
    EXPECT_EQ(decoder.readWavelet(reader, 0), kComplete);
    EXPECT_EQ(samplesOf(back), coefficients);
}

TEST_F(Suspension, AResumedDecoderReportsCompleteEvenForACutStream) {  // Quirk 12
    CBitReader reader(complete.data() + 16, 200);
    CImageData<short> back(kSide, kSide, 1);
    CWaveletDecoder<short> decoder(&back, &filter, false);
    EXPECT_EQ(decoder.readWavelet(reader, -7), kSuspended);
    EXPECT_EQ(decoder.readWavelet(reader, 0), kComplete);
    const test::Decoded whole = test::decode(Bytes(complete.begin(), complete.begin() + 216));
    EXPECT_EQ(whole.status, kCut);
}

TEST_F(Suspension, KillEndsADecoderAtTheNextSectionHeader) {
    CBitReader reader(complete.data() + 16, complete.size() - 16);
    CImageData<short> back(kSide, kSide, 1);
    CWaveletDecoder<short> decoder(&back, &filter, false);
    back.plane[0][77] = 1234;
    decoder.kill();
    EXPECT_EQ(decoder.readWavelet(reader, 0), kKilled);
    EXPECT_EQ(back.plane[0][77], 1234) << "planes are not touched";
    EXPECT_LT(reader.getTotal(), 100U);
}

TEST_F(Suspension, ADecoderThatIsKilledWhileSuspendedNeverCompletes) {
    CBitReader reader(complete.data() + 16, complete.size() - 16);
    CImageData<short> back(kSide, kSide, 1);
    CWaveletDecoder<short> decoder(&back, &filter, false);
    EXPECT_EQ(decoder.readWavelet(reader, -5), kSuspended);
    decoder.kill();
    for (int call = 0; call < 3 * kSide; ++call)
        EXPECT_EQ(decoder.readWavelet(reader, 0), kSuspended) << call;
}

TEST(SuspensionOfColours, LaterPlanesStartAtTheResumeRow) {  // Quirk 5
    // Rows 0 to 5 of planes 1 and 2 are never visited: the streams differ from complete ones, and
    // a decoder that pauses in the same way leaves those rows empty.
    const test::RawImage photo = test::makeImage(test::Content::photo, 3, 8, 16, 16);
    EXPECT_NE(test::encode(photo), test::encode(photo, ~std::uint64_t{0}, -5));
    const Bytes complete = test::encode(photo);
    const test::Decoded paused = test::decode(complete, test::ReadFrom::memory, -5);
    EXPECT_EQ(paused.status, kComplete);
    EXPECT_NE(paused.bytes, photo.bytes);
    EXPECT_EQ(test::decode(complete).bytes, photo.bytes);
}

TEST(SuspensionOfGray, APausedEncoderWritesTheSameStream) {
    const test::RawImage photo = test::makeImage(test::Content::photo, 1, 8, 64, 64);
    EXPECT_EQ(test::encode(photo), test::encode(photo, ~std::uint64_t{0}, -5));
}

}  // namespace
