#include <gtest/gtest.h>

#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/syntax/SectionSyntax.h"
#include "support/LibraryCodec.h"
#include "support/Planes.h"
#include "support/StreamBuilder.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::StreamBuilder;

/// Keeps the size that the encoder announces.
class SizeKeeper final : public CBitWriter {
public:
    using CBitWriter::CBitWriter;
    void setSize(std::uint64_t sizeBytes) override { announcedBytes = sizeBytes; }
    std::uint64_t announcedBytes = 0;
};

/// Encodes coefficients as they are, without a transform before.
template <class T>
struct Encoding {
    Encoding(int width, int height, const std::vector<T>& coefficients, int planes = 1)
        : image(width, height, planes),
          encoder(&image, &filter, false),
          bytes(1 << 16),
          writer(bytes.data(), bytes.size()) {
        test::setSamples(image, coefficients);
        EXPECT_EQ(encoder.writeWavelet(writer, 0), kComplete);
        bytes.resize((writer.getTotal() + 7) / 8);
    }
    CImageData<T> image;
    CFilter5_3<T> filter;
    CWaveletEncoder<T> encoder;
    Bytes bytes;
    SizeKeeper writer;
};

using Shorts = std::vector<short>;

TEST(WriteWavelet, ZerosAreOneEmptySectionForEachPlaneAndOrder) {
    const Encoding<short> gray(4, 4, Shorts(16, 0));
    EXPECT_EQ(gray.bytes, StreamBuilder(4, 4, 0).n(0, "").n(1, "").end());
    const Encoding<short> colour(2, 2, Shorts(12, 0), 3);
    EXPECT_EQ(
        colour.bytes,
        StreamBuilder(2, 2, 0).n(0, "").section(1, 0, false, "").section(2, 0, false, "").end());
}

TEST(WriteWavelet, ASideOfOneHasNoSections) {
    const Encoding<short> work(1, 9, Shorts(9, 100));
    EXPECT_EQ(work.bytes, StreamBuilder(1, 9, 6).end());
}

TEST(WriteWavelet, RunsSignsAndRefinementByHand) {
    const Encoding<short> work(2, 2, {0, 13, -3, 0});
    // Plane 3: value 8 * 3.7^3 / 8. Plane 2 is empty and goes out first, and with it everything
    // that is worth more than what follows.
    EXPECT_EQ(work.bytes, StreamBuilder(2, 2, 3)
                              .n(0, "01 0 0010")
                              .n(0, "")
                              .u(0, "1")
                              .n(0, "01 1 01")
                              .n(0, "")
                              .u(0, "0")
                              .u(0, "11")
                              .end());
}

TEST(WriteWavelet, TheAnnouncedSizeIsTheEstimateAndATwentieth) {
    const Encoding<short> work(2, 2, {0, 13, -3, 0});
    // 19 bits, for each of 4 planes 2 * 4 + 22, payloads of 7 + 5 and 1 + 1 + 2 bits.
    const std::uint64_t estimate = 19 + 4 * 30 + 12 + 4;
    EXPECT_EQ(work.writer.announcedBytes, (estimate + estimate / 20 + 7) / 8);
}

TEST(WriteWavelet, TheAnnouncedSizeCountsPlanesThatTheTablesLack) {
    const Encoding<short> work(2, 2, {-32768, 1, 20000, -20000});
    // -32768 folds to 1 and 20000 to a negative number, both of magnitude 0; 1 is new at plane 0.
    const std::uint64_t estimate = 19 + 62 * 30 + 7;
    EXPECT_EQ(work.writer.announcedBytes, (estimate + estimate / 20 + 7) / 8);
    StreamBuilder expected(2, 2, 61);
    EXPECT_EQ(work.bytes[0], 61);
}

TEST(WriteWavelet, WrappedFoldedValuesDecodeAsZeros) {  // Quirk 13
    const Encoding<short> work(2, 2, {-32768, 1, 20000, -5});
    CBitReader reader(work.bytes.data(), work.bytes.size());
    CImageData<short> back(2, 2, 1);
    CFilter5_3<short> filter;
    CWaveletDecoder<short> decoder(&back, &filter, false);
    EXPECT_EQ(decoder.readWavelet(reader, 0), kComplete);
    EXPECT_EQ(test::samplesOf(back), (Shorts{0, 1, 0, -5}));
}

TEST(WriteWavelet, EverySectionIsSentInAnOrderThatDecodersAccept) {
    Shorts coefficients;
    test::Random random(3);
    for (int i = 0; i < 64 * 64 * 3; ++i)
        coefficients.push_back(static_cast<short>(random.below(1U << random.below(12))));
    const Encoding<short> work(64, 64, coefficients, 3);
    CBitReader reader(work.bytes.data(), work.bytes.size());
    const int top = readTopPlane(reader);
    int sections = 0;
    int nextN[3][6];
    int nextU[3][6];
    std::fill_n(&nextN[0][0], 18, top);
    std::fill_n(&nextU[0][0], 18, top - 1);
    SectionHeader header;
    while (readSectionHeader(reader, header, sampleCountBits(64, 64))) {
        reader.skip(header.lengthBits);
        int& n = nextN[header.plane][header.order];
        int& u = nextU[header.plane][header.order];
        if (header.isRefinement) {
            EXPECT_GE(u, n);
            --u;
        } else {
            --n;
        }
        ++sections;
    }
    EXPECT_EQ(sections, 3 * 6 * (2 * top + 1));
}

TEST(WriteWavelet, ASectionTooLongForItsLengthFieldIsCounted) {  // Quirk 11
    const test::RawImage flat = test::makeImage(test::Content::flat, 1, 8, 100, 100);
    CImageData<short> image(100, 100, 1);
    CFilter5_3<short> filter;
    CWaveletEncoder<short> encoder(&image, &filter, false);
    test::readPlanes<short, unsigned char>(image, flat);
    encoder.transform();
    CBitChunkWriter writer;
    EXPECT_EQ(encoder.writeWavelet(writer, 0), kComplete);
    EXPECT_EQ(encoder.getOverlongSections(), 1U);

    const Encoding<short> fits(64, 64, Shorts(64 * 64, 0));
    EXPECT_EQ(fits.encoder.getOverlongSections(), 0U);
}

TEST(WriteWavelet, AFullWriterThrowsAndHoldsThePrefixOfTheCompleteStream) {
    const test::RawImage photo = test::makeImage(test::Content::photo, 3, 8, 33, 29);
    const Bytes complete = test::encode(photo);
    for (std::size_t room = 0; room < complete.size() - 16; room += 7) {
        const Bytes cut = test::encode(photo, room);
        ASSERT_EQ(cut.size(), 16 + room);
        ASSERT_TRUE(std::equal(cut.begin(), cut.end(), complete.begin())) << room;
    }
    EXPECT_EQ(test::encode(photo, complete.size() - 16), complete);
}

}  // namespace
