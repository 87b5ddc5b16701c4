#include "convert/TeskFile.h"

#include <gmock/gmock.h>

#include "convert/CTeskCodec.h"
#include "convert/ConvertTestSupport.h"
#include "convert/TrailerBoxes.h"
#include "convert/Utf8.h"
#include "trailer/CTrailerWriter.h"

namespace {

using namespace qmx;
using test::Bytes;

Metadata everyBox() {
    Metadata metadata;
    metadata.icc = std::string("profile\0x", 9);
    metadata.exif = "MM";
    metadata.xmp = "<x/>";
    metadata.description = "words";
    metadata.resolution = Resolution{1, 0xFFFFFFFF};
    metadata.maxValue = 1000;
    metadata.rawType = "int16";
    return metadata;
}

/// Returns: a stream with a trailer, as a file.
Bytes fileWith(const Metadata& metadata) {
    CTeskCodec codec;
    CTeskCodec::CBlock block;
    codec.compress(test::makeImage(9, 7, 2, 12), 0, block);
    Bytes file(block.view().begin(), block.view().end());
    const std::vector<unsigned char> trailer = trailerOf(metadata, block.view());
    file.insert(file.end(), trailer.begin(), trailer.end());
    return file;
}

TEST(TeskFile, EveryBoxComesBack) {
    const Bytes file = fileWith(everyBox());
    const TeskFile opened = openTeskFile(file);
    EXPECT_TRUE(opened.isWhole() && opened.hasChecksum);
    EXPECT_EQ(opened.geometry.width, 9U);
    EXPECT_EQ(opened.metadata.icc, everyBox().icc);
    EXPECT_EQ(opened.metadata.exif, everyBox().exif);
    EXPECT_EQ(opened.metadata.xmp, everyBox().xmp);
    EXPECT_EQ(opened.metadata.description, everyBox().description);
    EXPECT_EQ(opened.metadata.resolution->pixelsPerMetreX, 1U);
    EXPECT_EQ(opened.metadata.resolution->pixelsPerMetreY, 0xFFFFFFFF);
    EXPECT_EQ(opened.metadata.maxValue, 1000U);
    EXPECT_EQ(opened.metadata.rawType, "int16");
    EXPECT_TRUE(opened.metadata.notKept.empty());
}

TEST(TeskFile, EveryFlippedBitIsFound) {
    const Bytes file = fileWith(everyBox());
    for (std::size_t bit = 0; bit < 8 * file.size(); ++bit) {
        Bytes damaged = file;
        damaged[bit / 8] = static_cast<unsigned char>(damaged[bit / 8] ^ (1 << bit % 8));
        bool isFound = true;
        test::refusalOf([&] { isFound = !openTeskFile(damaged).isWhole(); });
        const bool isStillStream = damaged[0] == 'T' && damaged[1] == 'K';
        EXPECT_TRUE(isFound || !isStillStream) << bit;
    }
}

TEST(TeskFile, EveryPrefixIsCutAStreamWithoutTrailerOrStrange) {
    const Bytes file = fileWith({});
    const std::size_t streamBytes = openTeskFile(file).stream.size();
    for (std::size_t length = 16; length < file.size(); ++length) {
        const TeskFile opened = openTeskFile(ByteView(file).first(length));
        EXPECT_FALSE(opened.hasChecksum) << length;
        EXPECT_EQ(opened.strangeBytes, length > streamBytes ? length - streamBytes : 0) << length;
    }
}

TEST(TeskFile, UnknownAndSenselessBoxesAreNamed) {
    Bytes file = fileWith({});
    CTeskCodec codec;
    CTeskCodec::CBlock block;
    codec.compress(test::makeImage(9, 7, 1, 8), 0, block);
    CTrailerWriter writer;
    writer.add("what", test::viewOf("?"));
    writer.add("res ", test::viewOf("short"));
    const std::vector<unsigned char> trailer = writer.finish(block.view());
    file.assign(block.view().begin(), block.view().end());
    file.insert(file.end(), trailer.begin(), trailer.end());
    const TeskFile opened = openTeskFile(file);
    ASSERT_EQ(opened.metadata.notKept.size(), 2U);
    EXPECT_EQ(opened.metadata.notKept[0].words, "the box 'what'");
    EXPECT_FALSE(opened.metadata.resolution);
}

TEST(Utf8, Latin1BecomesUtf8) {
    EXPECT_EQ(latin1ToUtf8("f\xFC"
                           "nf"),
              "f\xC3\xBC"
              "nf");
    EXPECT_TRUE(
        isUtf8("f\xC3\xBC"
               "nf \xE2\x82\xAC \xF0\x9F\x98\x80"));
    for (const char* wrong :
         {"\xFC", "\xC3", "\xC3x", "\x80", "\xC0\x80", "\xE2\x82", "\xF8\x80\x80\x80\x80"})
        EXPECT_FALSE(isUtf8(wrong)) << wrong;
}

}  // namespace
