#include "container/StreamReading.h"

#include <gtest/gtest.h>
#include <map>

#include "bitstream/CBitWriter.h"
#include "coding/encode/EncodeRows.h"
#include "coding/syntax/SectionSyntax.h"
#include "container/IPixelRows.h"
#include "exact/ExposedImages.h"
#include "support/CodecObjects.h"

namespace {

using namespace qmx;
using test::Bright;
using test::Bytes;
using test::RawImage;

/// The plain stream of an 8-bit gray image, with what its encoder knows.
struct Plain {
    explicit Plain(const RawImage& image)
        : header(makeHeader(1, 8, image.width, image.height)),
          sections({image.width, image.height, 1}, std::pmr::new_delete_resource()) {
        CPixelsInMemory pixels(image.bytes.data(), header.rawRowBytes());
        CPixelSource<short> source(pixels, 1);
        encodeRows(source, sections);
        streamBits = sections.facts().streamBits;
    }

    /// Returns: the stream as far as so many bytes hold it.
    WrittenStream cutAt(std::size_t sizeBytes) {
        bytes.assign(sizeBytes, 0);
        CBitWriter writer(bytes.data(), sizeBytes);
        sections.writeWhatFits(writer);
        return {bytes.data(), sizeBytes, sections.facts().misreadBit};
    }
    std::size_t completeBytes() const { return (streamBits + 7) / 8; }

    TKHeader header;
    CCodedSections<short> sections;
    std::uint64_t streamBits;
    Bytes bytes;
};

TEST(StreamReading, IsWhatDecodersMakeOfEveryCutStream) {
    std::map<Reading, int> met;
    for (const auto& [width, height] : {test::ExposedSize{5, 5}, {9, 13}, {17, 25}, {100, 100}})
        for (int seed = 1; seed <= 6; ++seed) {
            Plain plain(test::makeBright(Bright::nearlyFlat, 1, 8, width, height,
                                         static_cast<std::uint64_t>(seed)));
            for (std::size_t size = 1; size < plain.completeBytes(); size += 1 + size / 40) {
                const WrittenStream written = plain.cutAt(size);
                const Reading reading = readingOf(plain.header, written);
                ++met[reading];
                const int status =
                    test::decompressObject(test::headed(plain.header, plain.bytes)).status;
                EXPECT_EQ(reading == Reading::refused, status == kInvalidSection) << size;
                if (reading == Reading::part) {
                    EXPECT_EQ(status, kCut) << size;
                }
                if (written.misreadBit > 8 * size) {
                    EXPECT_EQ(reading, Reading::part) << size;
                }
            }
        }
    EXPECT_GT(met[Reading::part], 50);
    EXPECT_GT(met[Reading::refused], 100);
}

TEST(StreamReading, OfSectionsThatFitIsRight) {
    Plain plain(test::makeImage(test::Content::photo, 1, 8, 60, 50));
    const WrittenStream whole = plain.cutAt(plain.completeBytes());
    EXPECT_EQ(whole.misreadBit, CodedFacts::kNeverMisread);
    EXPECT_EQ(readingOf(plain.header, whole), Reading::whole);
    EXPECT_TRUE(endsAtItsEnd(plain.header, whole, plain.streamBits));
    EXPECT_EQ(readingOf(plain.header, plain.cutAt(100)), Reading::part);
    EXPECT_FALSE(endsAtItsEnd(plain.header, plain.cutAt(100), plain.streamBits));
}

TEST(StreamReading, OfAStreamThatOnlyLacksPaddingIsThatOfTheWhole) {
    Plain plain(test::makeImage(test::Content::photo, 1, 8, 60, 50));
    EXPECT_EQ(readingOf(plain.header, plain.cutAt(plain.completeBytes() - 1)), Reading::whole);
    EXPECT_EQ(readingOf(plain.header, plain.cutAt(plain.completeBytes() - 3)), Reading::part);
}

TEST(StreamReading, OfNoBytesIsThatOfAPart) {
    Plain plain(test::makeBright(Bright::flat, 1, 8, 7, 7));
    EXPECT_EQ(readingOf(plain.header, plain.cutAt(0)), Reading::part);
    EXPECT_EQ(readingOf(plain.header, {nullptr, 0, 0}), Reading::part);
}

// Bits of a stream of 5 x 5 pixels, level 1: a section of order 1 has a length of 4 bits. The stream says that
// it has 2 bits, has 4, of which decoders take the last two, 11, for an end mark.
TEST(StreamReading, WithAnEndMarkInsideASectionIsWrong) {
    Bytes bytes(16, 0);
    CBitWriter writer(bytes.data(), bytes.size());
    writer.writeInt(7, 8);
    writeSectionHeader(writer, {0, 1, false, 16 + 2}, sampleCountBits(5, 5));
    const std::uint64_t misreadBit = writer.getTotal() + 2;
    writer.writeInt(0b1100, 4);
    const std::size_t written = (writer.getTotal() + 7) / 8;
    writer.flush();
    const TKHeader header = makeHeader(1, 8, 5, 5);
    EXPECT_EQ(readingOf(header, {bytes.data(), written, misreadBit}), Reading::wrong);
    EXPECT_EQ(readingOf(header, {bytes.data(), written, misreadBit + 100}), Reading::whole);
    EXPECT_FALSE(endsAtItsEnd(header, {bytes.data(), written, misreadBit}, 8 * written));
}

}  // namespace
