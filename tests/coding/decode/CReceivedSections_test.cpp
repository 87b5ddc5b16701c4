// Streams by hand: how their reading ends, and the coefficients that they hold.

#include "coding/decode/CReceivedSections.h"

#include <gtest/gtest.h>
#include <list>

#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::StreamBuilder;

/// Keeps the samples of plane 0.
template <class T>
class KeptSamples final : public IRowSink<T> {
public:
    bool take(const CImageData<T>& rows, int slot, int) override {
        samples.insert(samples.end(), rows.row(0, slot), rows.row(0, slot) + rows.x);
        return true;
    }
    std::vector<T> samples;
};

/// A decoder for small planes. Images of 2 x 2 and 2 x 3 samples have level count 0 and lines that are
/// not filtered, so all of their samples are coefficients of order 0 in raster order.
template <class T>
struct Decoding {
    Decoding(int width, int height, int planes = 1)
        : sections({width, height, planes}, std::pmr::new_delete_resource()) {}
    int read(const Bytes& bytes, int sectionLimit = 0, const CStopRequest& stop = kNeverStopped) {
        const Bytes& stream = streams.emplace_back(bytes);
        return sections.read(readers.emplace_back(stream.data(), stream.size()), sectionLimit,
                             stop);
    }
    std::vector<T> samples() {
        KeptSamples<T> sink;
        EXPECT_TRUE(decodeRows(sections, sink));
        return sink.samples;
    }

    // Those of earlier calls stay, so that what is left of them would be seen.
    std::list<Bytes> streams;
    std::list<CBitReader> readers;
    CReceivedSections<T> sections;
};

using Shorts = std::vector<short>;
using Ints = std::vector<int>;

/// What a stream gives in 2 x 2 samples.
template <class T = short>
void expectSamples(const Bytes& stream, int status, const std::vector<T>& samples, int limit = 0) {
    Decoding<T> work(2, 2);
    ASSERT_EQ(work.read(stream, limit), status);
    EXPECT_EQ(work.samples(), samples);
}

TEST(CReceivedSections, StreamsWithoutSectionsDecodeToZeros) {
    expectSamples(StreamBuilder(2, 2, 5).end(), kComplete, Shorts(4));
    expectSamples(Bytes{5}, kCut, Shorts(4));
    expectSamples(Bytes{}, kCut, Ints(4));
}

/// Top plane 3; sample 1 is new at plane 3 and positive, sample 2 new at plane 1 and negative.
StreamBuilder twoCoefficients() {
    StreamBuilder stream(2, 2, 3);
    stream.n(0, "01 0 0010").n(0, "").n(0, "01 1 01");
    return stream;
}

TEST(CReceivedSections, WithAllRefinementTheValueIsExact) {
    expectSamples(twoCoefficients().n(0, "").u(0, "1").u(0, "0").u(0, "11").end(), kComplete,
                  Shorts{0, 13, -3, 0});
}

TEST(CReceivedSections, UnrefinedPlanesAreEstimatedAtAQuarter) {
    expectSamples(twoCoefficients().cut(), kCut, Shorts{0, 8 + 2, -2, 0});
    expectSamples(twoCoefficients().u(0, "1").cut(), kCut, Shorts{0, 8 + 4 + 1, -2, 0});
    // Planes 2 and 1 of sample 1 are known, plane 0 is not: it adds nothing.
    expectSamples(twoCoefficients().u(0, "0").u(0, "1").cut(), kCut, Shorts{0, 8 + 2, -2, 0});
}

TEST(CReceivedSections, ANewCoefficientAtPlaneOneOrTwoAlone) {
    expectSamples(StreamBuilder(2, 2, 1).n(0, "1 0 0011").cut(), kCut, Shorts{2, 0, 0, 0});
    expectSamples(StreamBuilder(2, 2, 2).n(0, "1 1 0011").cut(), kCut, Shorts{-5, 0, 0, 0});
}

TEST(CReceivedSections, ASectionLimitCutsTheStream) {
    const Bytes one = StreamBuilder(2, 2, 0).n(0, "1 1 0011").end();
    expectSamples(one, kComplete, Shorts{-1, 0, 0, 0}, 2);
    expectSamples(one, kCut, Shorts{-1, 0, 0, 0}, 1);
    const Bytes more = twoCoefficients().u(0, "1").end();
    expectSamples(more, kCut, Shorts{0, 10, 0, 0}, 1);
    expectSamples(more, kCut, Shorts{0, 10, -2, 0}, 3);
}

TEST(CReceivedSections, PlanesAndOrdersThatTheImageLacksAreInvalid) {
    const Bytes second = StreamBuilder(2, 2, 0).section(1, 0, false, "").end();
    const Bytes third = StreamBuilder(2, 2, 0).section(2, 0, false, "").end();
    Decoding<short> gray(2, 2);
    EXPECT_EQ(gray.read(second), kInvalidSection);
    EXPECT_EQ(gray.read(third), kInvalidSection);
    EXPECT_EQ(gray.read(StreamBuilder(2, 2, 0).n(1, "").end()), kInvalidSection);
    Decoding<short> colour(2, 2, 3);
    EXPECT_EQ(colour.read(second), kComplete);
    EXPECT_EQ(colour.read(third), kComplete);
}

TEST(CReceivedSections, WithoutOrdersEverySampleIsZeroAndEverySectionInvalid) {
    Decoding<short> work(1, 9);
    EXPECT_EQ(work.read(StreamBuilder(1, 9, 7).n(0, "1").end()), kInvalidSection);
    EXPECT_EQ(work.read(StreamBuilder(1, 9, 7).end()), kComplete);
    EXPECT_EQ(work.samples(), Shorts(9));
}

TEST(CReceivedSections, BitPlanesOutsideTheTablesCarryNothing) {  // Quirk 13
    for (const int top : {16, 31, 61, 254}) {
        StreamBuilder stream(2, 2, top);
        for (int p = top; p > 0; --p)
            stream.n(0, p > 15 ? "1 0 1 0 1 0 1 0 1" : "");
        expectSamples(stream.n(0, "01 1 0010").end(), kComplete, Shorts{0, -1, 0, 0});
    }
}

TEST(CReceivedSections, ThoseBelowPlaneZeroAreSkipped) {
    StreamBuilder stream(2, 2, 0);
    stream.n(0, "1 0 0011");
    for (int i = 0; i < 300; ++i)
        stream.n(0, "1 1 0011").u(0, "1111");
    expectSamples(stream.end(), kComplete, Ints{1, 0, 0, 0});
}

TEST(CReceivedSections, TheHighestBitPlanesWrapIntoTheSampleType) {
    StreamBuilder stream(2, 2, 31);
    stream.n(0, "1 0 1 1 0010");
    for (int p = 30; p >= 0; --p)
        stream.n(0, "");
    for (int p = 30; p >= 0; --p)
        stream.u(0, p == 0 ? "11" : "00");
    using Limits = std::numeric_limits<int>;
    expectSamples(stream.end(), kComplete, Ints{Limits::min() + 1, Limits::max(), 0, 0});
}

TEST(CReceivedSections, ACutSignificanceSectionHasNoFurtherNewCoefficient) {
    expectSamples(StreamBuilder(2, 2, 0).header(0, 0, false, 9).cut(), kCut, Shorts(4));
}

TEST(CReceivedSections, ASectionReaderIsNotStoppedByTheLengthOfItsSection) {  // Quirk 14
    // A length of 2 bits holds a run of 0 and a sign; the next run is read from what follows.
    const StreamBuilder stream = StreamBuilder(2, 2, 0).n(0, "1 1");
    expectSamples(stream.cut(), kCut, Shorts{-1, 0, 0, 0});
    expectSamples(stream.end(), kComplete, Shorts{-1, -1, 0, 0});
}

TEST(CReceivedSections, APayloadUpToTheEndOrBeyondCutsTheStream) {
    // 14 bits follow the header.
    for (const std::uint64_t length : {14U, 15U})
        expectSamples(StreamBuilder(2, 2, 0).header(0, 0, true, length).end(), kCut, Shorts(4));
}

TEST(CReceivedSections, ThoseOfAnEarlierStreamAreForgotten) {
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(StreamBuilder(2, 2, 1).n(0, "1 1 1 1 1 1 1 1 1").u(0, "1").end()),
              kComplete);
    EXPECT_EQ(work.read(StreamBuilder(2, 2, 1).n(0, "").n(0, "").end()), kComplete);
    EXPECT_EQ(work.samples(), Shorts(4));
}

TEST(CReceivedSections, WhenStoppedNoFurtherSectionIsRead) {
    const std::atomic<bool> stop{true};
    Decoding<short> work(2, 2);
    EXPECT_EQ(work.read(twoCoefficients().end(), 0, CStopRequest(stop)), kKilled);
    EXPECT_EQ(work.readers.back().getTotal(), 8U + 6 + 4) << "the top plane and a header";
}

}  // namespace
