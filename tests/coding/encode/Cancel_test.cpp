#include <atomic>
#include <gtest/gtest.h>

#include "bitstream/CBitReader.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "coding/encode/CWaveletEncoder.h"
#include "support/Planes.h"
#include "support/StreamBuilder.h"
#include "wavelet/CFilter5_3.h"

// The stages that go over planes or sections without coding them look at the watched flag, too: with the flag
// set nothing is done.

namespace {

using namespace qmx;

constexpr int kSide = 40;
constexpr short kSample = 77;

class Cancel : public testing::Test {
protected:
    Cancel() {
        for (int r = 0; r < kSide; ++r)
            std::fill_n(image.row(0, r), kSide, kSample);
    }
    bool isUntouched() const {
        for (int r = 0; r < kSide; ++r)
            for (int c = 0; c < kSide; ++c)
                if (image.row(0, r)[c] != kSample) return false;
        return true;
    }

    CImageData<short> image{kSide, kSide, 1};
    CFilter5_3<short> filter;
    std::atomic<bool> stop{true};
};

TEST_F(Cancel, LeavesPlanesUnfolded) {
    CWaveletEncoder<short> encoder(&image, &filter, false);
    encoder.watch(stop);
    EXPECT_EQ(encoder.codeCoefficients(0), kSuspended);
    EXPECT_TRUE(isUntouched());
}

TEST_F(Cancel, LeavesSectionsUnwritten) {
    constexpr std::uint64_t kBitsOutsideSections = 8 + 2 + 9;
    CWaveletEncoder<short> encoder(&image, &filter, false);
    encoder.watch(stop);
    stop = false;
    encoder.transform();
    ASSERT_EQ(encoder.codeCoefficients(0), kComplete);
    unsigned char bytes[1000];
    CBitWriter whole(bytes, sizeof bytes);
    encoder.writeStream(whole);
    EXPECT_GT(whole.getTotal(), 10 * kBitsOutsideSections);
    stop = true;
    CBitWriter none(bytes, sizeof bytes);
    encoder.writeStream(none);
    EXPECT_EQ(none.getTotal(), kBitsOutsideSections);
}

TEST_F(Cancel, LeavesPlanesUncleared) {
    test::StreamBuilder stream(kSide, kSide, 7);
    const test::Bytes bytes = stream.end();
    CBitReader reader(bytes.data(), bytes.size());
    CWaveletDecoder<short> decoder(&image, &filter, false);
    decoder.watch(stop);
    EXPECT_EQ(decoder.readWavelet(reader, 0), kSuspended);
    EXPECT_TRUE(isUntouched());
}

}  // namespace
