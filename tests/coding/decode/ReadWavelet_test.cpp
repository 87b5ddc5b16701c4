#include <gtest/gtest.h>

#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "support/LibraryCodec.h"
#include "support/Planes.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::StreamBuilder;

/// A decoder for small planes. Images of 2 x 2 and 2 x 3 samples have level count 0, so all of
/// their coefficients have order 0 in raster order.
template <class T>
struct Decoding {
    Decoding(int width, int height, int planes = 1)
        : image(width, height, planes), decoder(&image, &filter, false) {
        std::fill_n(image.plane[0], image.stride * height, T{99});
    }
    int read(const Bytes& stream, int arg = 0) {
        CBitReader reader(stream.data(), stream.size());
        return decoder.readWavelet(reader, arg);
    }
    std::vector<T> samples() const { return test::samplesOf(image); }

    CImageData<T> image;
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder;
};

using Shorts = std::vector<short>;
using Ints = std::vector<int>;

TEST(ReadWavelet, TopPlaneAndEndMarkAloneDecodeToZeros) {
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(StreamBuilder(2, 2, 5).end()), kComplete);
    EXPECT_EQ(work.samples(), Shorts(4, 0));
}

TEST(ReadWavelet, AStreamCutBehindTheTopPlaneDecodesToZeros) {
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(Bytes{5}), kCut);
    EXPECT_EQ(work.samples(), Shorts(4, 0));
}

TEST(ReadWavelet, AnEmptyStreamDecodesToZeros) {
    Decoding<int> work(2, 2);
    EXPECT_EQ(work.read({}), kCut);
    EXPECT_EQ(work.samples(), Ints(4, 0));
}

/// Top plane 3; sample 1 is new at plane 3 and positive, sample 2 new at plane 1 and negative.
StreamBuilder twoCoefficients() {
    StreamBuilder stream(2, 2, 3);
    stream.n(0, "01 0 0010").n(0, "").n(0, "01 1 01");
    return stream;
}

TEST(ReadWavelet, WithAllRefinementTheValueIsExact) {
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(twoCoefficients().n(0, "").u(0, "1").u(0, "0").u(0, "11").end()),
              kComplete);
    EXPECT_EQ(work.samples(), (Shorts{0, 13, -3, 0}));
}

TEST(ReadWavelet, UnrefinedPlanesAreEstimatedAtAQuarter) {
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(twoCoefficients().cut()), kCut);
    EXPECT_EQ(work.samples(), (Shorts{0, 8 + 2, -2, 0}));
}

TEST(ReadWavelet, TheLastUnknownPlaneAddsNothing) {
    Decoding<short> work(2, 2);
    // Planes 2 and 1 of sample 1 are known, plane 0 is not.
    work.read(twoCoefficients().u(0, "0").u(0, "1").cut());
    EXPECT_EQ(work.samples(), (Shorts{0, 8 + 2, -2, 0}));
    Decoding<short> half(2, 2);
    half.read(twoCoefficients().u(0, "1").cut());
    EXPECT_EQ(half.samples(), (Shorts{0, 8 + 4 + 1, -2, 0}));
}

TEST(ReadWavelet, ANewCoefficientAtPlaneOneOrTwoAlone) {
    Decoding<short> one(2, 2);
    one.read(StreamBuilder(2, 2, 1).n(0, "1 0 0011").cut());
    EXPECT_EQ(one.samples(), (Shorts{2, 0, 0, 0}));
    Decoding<short> two(2, 2);
    two.read(StreamBuilder(2, 2, 2).n(0, "1 1 0011").cut());
    EXPECT_EQ(two.samples(), (Shorts{-5, 0, 0, 0}));
}

TEST(ReadWavelet, ASectionLimitCutsTheStream) {
    Decoding<short> work(2, 2);
    const Bytes stream = StreamBuilder(2, 2, 0).n(0, "1 1 0011").end();
    EXPECT_EQ(work.read(stream, 2), kComplete);
    Decoding<short> limited(2, 2);
    EXPECT_EQ(limited.read(stream, 1), kCut);
    EXPECT_EQ(limited.samples(), (Shorts{-1, 0, 0, 0}));
}

TEST(ReadWavelet, OnlyTheFirstSectionsCountUnderALimit) {
    const Bytes stream = twoCoefficients().u(0, "1").end();
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(stream, 1), kCut);
    EXPECT_EQ(work.samples(), (Shorts{0, 10, 0, 0}));
}

TEST(ReadWavelet, PlanesAndOrdersThatTheImageLacksAreInvalid) {
    Decoding<short> gray(2, 2);
    EXPECT_EQ(gray.read(twoCoefficients().end()), kComplete);
    const Shorts before = gray.samples();
    EXPECT_EQ(gray.read(StreamBuilder(2, 2, 0).section(2, 0, false, "").end()), kInvalidSection);
    EXPECT_EQ(gray.read(StreamBuilder(2, 2, 0).section(1, 0, false, "").end()), kInvalidSection);
    EXPECT_EQ(gray.read(StreamBuilder(2, 2, 0).n(1, "").end()), kInvalidSection);
    EXPECT_EQ(gray.samples(), before) << "planes are not touched";
    Decoding<short> colour(2, 2, 3);
    EXPECT_EQ(colour.read(StreamBuilder(2, 2, 0).section(2, 0, false, "").end()), kComplete);
}

TEST(ReadWavelet, WithoutOrdersEverySampleIsZeroAndEverySectionInvalid) {
    Decoding<short> work(1, 9);
    EXPECT_EQ(work.read(StreamBuilder(1, 9, 7).end()), kComplete);
    EXPECT_EQ(work.samples(), Shorts(9, 0));
    EXPECT_EQ(work.read(StreamBuilder(1, 9, 7).n(0, "1").end()), kInvalidSection);
}

TEST(ReadWavelet, BitPlanesOutsideTheTablesCarryNothing) {  // Quirk 13
    for (const int top : {16, 31, 61, 254}) {
        StreamBuilder stream(2, 2, top);
        for (int p = top; p > 0; --p)
            stream.n(0, p > 15 ? "1 0 1 0 1 0 1 0 1" : "");
        Decoding<short> work(2, 2);
        EXPECT_EQ(work.read(stream.n(0, "01 1 0010").end()), kComplete) << top;
        EXPECT_EQ(work.samples(), (Shorts{0, -1, 0, 0})) << top;
    }
}

TEST(ReadWavelet, SectionsBelowPlaneZeroAreSkipped) {
    StreamBuilder stream(2, 2, 0);
    stream.n(0, "1 0 0011");
    for (int i = 0; i < 300; ++i)
        stream.n(0, "1 1 0011").u(0, "1111");
    Decoding<int> work(2, 2);
    EXPECT_EQ(work.read(stream.end()), kComplete);
    EXPECT_EQ(work.samples(), (Ints{1, 0, 0, 0}));
}

TEST(ReadWavelet, TheHighestBitPlanesWrapIntoTheSampleType) {
    StreamBuilder stream(2, 2, 31);
    stream.n(0, "1 0 1 1 0010");
    for (int p = 30; p >= 0; --p)
        stream.n(0, "");
    for (int p = 30; p >= 0; --p)
        stream.u(0, p == 0 ? "11" : "00");
    Decoding<int> work(2, 2);
    EXPECT_EQ(work.read(stream.end()), kComplete);
    EXPECT_EQ(work.samples(),
              (Ints{std::numeric_limits<int>::min() + 1, std::numeric_limits<int>::max(), 0, 0}));
}

TEST(ReadWavelet, ACutSignificanceSectionHasNoFurtherNewCoefficient) {
    Bytes stream = StreamBuilder(2, 2, 0).header(0, 0, false, 9).cut();
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(stream), kCut);
    EXPECT_EQ(work.samples(), Shorts(4, 0));
}

TEST(ReadWavelet, ASectionReaderIsNotStoppedByTheLengthOfItsSection) {  // Quirk 14
    // A length of 2 bits holds a run of 0 and a sign; the next run is read from what follows.
    const Bytes stream = StreamBuilder(2, 2, 0).n(0, "1 1").cut();
    Decoding<short> alone(2, 2);
    EXPECT_EQ(alone.read(stream), kCut);
    EXPECT_EQ(alone.samples(), (Shorts{-1, 0, 0, 0}));
    const Bytes followed = StreamBuilder(2, 2, 0).n(0, "1 1").end();
    Decoding<short> next(2, 2);
    EXPECT_EQ(next.read(followed), kComplete);
    EXPECT_EQ(next.samples(), (Shorts{-1, -1, 0, 0}));
}

TEST(ReadWavelet, APayloadUpToTheEndOrBeyondCutsTheStream) {
    // 14 bits follow the header.
    for (const std::uint64_t length : {14U, 15U}) {
        Decoding<short> work(2, 2);
        EXPECT_EQ(work.read(StreamBuilder(2, 2, 0).header(0, 0, true, length).end()), kCut);
    }
}

TEST(ReadWavelet, AFreshDecoderForgetsTheSectionsOfAnEarlierCall) {
    Decoding<short> work(2, 2);
    work.read(StreamBuilder(2, 2, 1).n(0, "1 0 0011").u(0, "1").end());
    EXPECT_EQ(work.read(StreamBuilder(2, 2, 1).n(0, "").n(0, "").end()), kComplete);
    EXPECT_EQ(work.samples(), Shorts(4, 0));
}

}  // namespace
