// The coarsest order coded in another way: what decoders make of it.

#include <gtest/gtest.h>

#include "bitstream/CBitReader.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/encode/CWaveletEncoder.h"
#include "coding/encode/SectionRescue.h"
#include "support/Planes.h"
#include "wavelet/CFilter5_3.h"

namespace {

using namespace qmx;

class RecodeOrder : public testing::Test {
protected:
    RecodeOrder() {
        test::fillRandom(image, 40, 9);
        original = test::samplesOf(image);
        encoder.transform();
        encoder.codeCoefficients(0);
    }

    test::Bytes write() {
        test::Bytes stream((encoder.getStreamBits() + 7) / 8);
        CBitWriter writer(stream.data(), stream.size());
        encoder.writeStream(writer);
        return stream;
    }

    static std::vector<short> decode(const test::Bytes& stream) {
        CImageData<short> decoded(kSide, kSide, 1);
        CFilter5_3<short> filter;
        CWaveletDecoder<short> decoder(&decoded, &filter, false);
        CBitReader reader(stream.data(), stream.size());
        EXPECT_EQ(decoder.readWavelet(reader, 0), kComplete);
        decoder.untransform();
        return test::samplesOf(decoded);
    }

    static constexpr int kSide = 64;
    CImageData<short> image{kSide, kSide, 1};
    CFilter5_3<short> filter;
    CWaveletEncoder<short> encoder{&image, &filter, false};
    std::vector<short> original;
};

TEST_F(RecodeOrder, TheSameValuesGiveTheSameStream) {
    const test::Bytes plain = write();
    encoder.recodeCoarsest(0, encoder.getCoarsestValues(0), ClosingRuns::written);
    EXPECT_EQ(write(), plain);
    EXPECT_EQ(decode(plain), original);
}

TEST_F(RecodeOrder, OtherRepresentativesAreTheSameCoefficients) {
    const test::Bytes plain = write();
    FoldedValues values = encoder.getCoarsestValues(0);
    const COtherRepresentative move;
    for (std::size_t i = 0; i < values.size(); i += 2)
        if (move.canMove(values[i])) values[i] = move.moved(values[i], 1);
    encoder.recodeCoarsest(0, values, ClosingRuns::written);
    EXPECT_EQ(encoder.getTopPlane(), 15);
    const test::Bytes recoded = write();
    EXPECT_NE(recoded, plain);
    EXPECT_EQ(decode(recoded), original);
}

TEST_F(RecodeOrder, RunsOfEmptySectionsMayBeSpelledOut) {
    // The details do not reach the bit planes of the coarsest order.
    const std::size_t plainBytes = write().size();
    encoder.sendEndlessRuns(100);
    const test::Bytes spelled = write();
    EXPECT_GT(spelled.size(), plainBytes);
    EXPECT_EQ(decode(spelled), original);
}

}  // namespace
