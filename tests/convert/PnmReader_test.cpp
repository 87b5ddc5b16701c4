#include "convert/PnmReader.h"

#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using test::Bytes;
using testing::ElementsAre;
using testing::IsEmpty;

ImageFile read(std::string_view file, const ReadOptions& options = {}) {
    return readPnm(test::bufferOf(file), options);
}

std::string refusal(std::string_view file, const ReadOptions& options = {}) {
    return test::refusalOf([&] { read(file, options); });
}

TEST(PnmReader, BinaryGrayStaysWhereItIs) {
    const ImageFile image = read("P5\n3 2\n255\nabcdef");
    EXPECT_EQ(image.geometry.width, 3U);
    EXPECT_EQ(image.geometry.height, 2U);
    EXPECT_EQ(image.geometry.bytes_per_pixel, 1U);
    EXPECT_EQ(image.geometry.bits_per_pixel, 8U);
    EXPECT_EQ(image.pixelsAtByte, 11U);
    EXPECT_EQ(test::samplesOf(image), Bytes({'a', 'b', 'c', 'd', 'e', 'f'}));
    EXPECT_THAT(image.notes, IsEmpty());
}

TEST(PnmReader, TwoBytesAreBigEndianInTheFile) {
    const ImageFile image = read({"P5 2 2 4095 \0\1\2\3\4\5\6\7", 20});
    EXPECT_EQ(image.geometry.bytes_per_pixel, 2U);
    EXPECT_EQ(image.geometry.bits_per_pixel, 0U) << "found later";
    EXPECT_EQ(test::samplesOf(image), Bytes({1, 0, 3, 2, 5, 4, 7, 6}));
}

TEST(PnmReader, CommentsMayStandInTheHead) {
    const ImageFile image = read("P5 # a comment\n# another\n2#and here\n2 15\n\1\2\3\4");
    EXPECT_EQ(image.geometry.bits_per_pixel, 4U);
    EXPECT_EQ(test::samplesOf(image), Bytes({1, 2, 3, 4}));
    ASSERT_EQ(image.metadata.notKept.size(), 1U);
    EXPECT_EQ(image.metadata.notKept[0].words, "comments");
}

TEST(PnmReader, WhiteOfABitmapIsOne) {
    // Rows begin at a byte; 1 is black in the file.
    const ImageFile packed = read({"P4 9 2\n\xF0\x80\x0F\0", 11});
    EXPECT_EQ(packed.geometry.bits_per_pixel, 1U);
    EXPECT_EQ(test::samplesOf(packed),
              Bytes({0, 0, 0, 0, 1, 1, 1, 1, 0, 1, 1, 1, 1, 0, 0, 0, 0, 1}));
    EXPECT_EQ(test::samplesOf(read("P1 2 2 10\n0 1")), Bytes({0, 1, 1, 0}));
}

TEST(PnmReader, PlainNumbersOfBothSizes) {
    EXPECT_EQ(test::samplesOf(read("P2 2 2 255 1 2 # c\n 3 255")), Bytes({1, 2, 3, 255}));
    EXPECT_EQ(test::samplesOf(read("P2 2 2 300 1 2 3 300")), Bytes({1, 0, 2, 0, 3, 0, 44, 1}));
    EXPECT_EQ(test::samplesOf(read("P3 2 2 255 1 2 3 4 5 6 7 8 9 10 11 12")).size(), 12U);
}

TEST(PnmReader, PamOfGrayAndColour) {
    const ImageFile gray =
        read("P7\nWIDTH 2\nHEIGHT 2\nDEPTH 1\nMAXVAL 255\nTUPLTYPE GRAYSCALE\nENDHDR\nabcd");
    EXPECT_EQ(test::samplesOf(gray), Bytes({'a', 'b', 'c', 'd'}));
    const ImageFile rgb = read("P7\nMAXVAL 255\nDEPTH 3\nHEIGHT 2\nWIDTH 2\nENDHDR\nabcdefghijkl");
    EXPECT_EQ(rgb.geometry.bytes_per_pixel, 3U);
}

TEST(PnmReader, OtherMaximumValuesAreSaid) {
    const ImageFile image = read("P5 2 2 200 abcd");
    EXPECT_EQ(image.metadata.maxValue, 200U);
    EXPECT_THAT(image.notes, ElementsAre("maximum value 200 is kept in the trailer only"));
}

TEST(PnmReader, AnOpaqueChannelIsLeftOutWhenAsked) {
    const std::string head = "P7 WIDTH 2 HEIGHT 2 DEPTH 2 MAXVAL 200 ENDHDR\n";
    const std::string opaque = head +
                               "a\xC8"
                               "b\xC8"
                               "c\xC8"
                               "d\xC8";
    EXPECT_THAT(refusal(opaque),
                testing::StartsWith("has an alpha channel, which a stream cannot hold; "));
    ReadOptions options;
    options.leavesOutOpaqueAlpha = true;
    EXPECT_EQ(test::samplesOf(read(opaque, options)), Bytes({'a', 'b', 'c', 'd'}));
    EXPECT_THAT(refusal(head + "a\xC8"
                               "b\xC8"
                               "c\xC8"
                               "d\xC7",
                        options),
                testing::HasSubstr("not opaque everywhere"));
}

TEST(PnmReader, AllPrefixesAreRefused) {
    for (const std::string file :
         {"P5 3 5 255 abcdefghijklmno", "P2 3 2 9 1 2 3 4 5 6", "P4 9 2 abcd",
          "P7 WIDTH 2 HEIGHT 2 DEPTH 1 MAXVAL 9 ENDHDR\n\1\2\3\4"}) {
        EXPECT_EQ(refusal(file), "") << file;
        for (std::size_t length = 2; length < file.size(); ++length)
            EXPECT_NE(refusal(file.substr(0, length)), "") << file << length;
    }
    EXPECT_EQ(refusal("P5 3 5 255 abcdefg"), "ends in row 3 of 5");
    EXPECT_EQ(refusal("P2 3 2 9 1 2 3 4 5"), "ends in row 2 of 2");
}

TEST(PnmReader, WhatNoStreamHoldsIsRefusedBeforeItIsAllocated) {
    EXPECT_EQ(refusal("P5 70000 300 255 "),
              "is 70000 x 300 pixels; a stream holds up to 65535 x 65535");
    EXPECT_THAT(refusal("P5 1 300 255 "),
                testing::StartsWith("has a side of 1, which no stream restores"));
    EXPECT_EQ(refusal("P5 0 300 255 "), "has no pixels");
    EXPECT_EQ(refusal("P5 30000 30000 255 "),
              "is 30000 x 30000 pixels, more than the 500000000 of --max-pixels");
    EXPECT_THAT(refusal("P6 2 2 256 "), testing::StartsWith("is 16-bit RGB; "));
    EXPECT_EQ(refusal("P3 20000 20000 255 1"), "is a damaged PNM: it ends before its last row");
}

TEST(PnmReader, DamageIsSaid) {
    EXPECT_EQ(refusal("P5 2 2 0 abcd"), "is a damaged PNM: its maximum value is 0");
    EXPECT_EQ(refusal("P5 2 2 65536 abcdefgh"),
              "is a damaged PNM: no maximum value from 1 to 65535");
    EXPECT_EQ(refusal("P5 x 2 255 abcd"), "is a damaged PNM: no width");
    EXPECT_EQ(refusal("P5 2 99999999999999999999 255 abcd"), "is a damaged PNM: no height");
    EXPECT_EQ(refusal("P5 2 2 9 \1\2\3\12"),
              "is a damaged PNM: a sample above its maximum value 9 in row 2");
    EXPECT_THAT(refusal("P2 2 2 9 1 2 3 10 "), testing::StartsWith("is a damaged PNM: no number"));
    EXPECT_THAT(refusal("P1 2 2 1021"), testing::StartsWith("is a damaged PNM: no number"));
    EXPECT_THAT(refusal("P7 WIDTH 2 HEIGHT 2 DEPTH 5 MAXVAL 9 ENDHDR\n"),
                testing::HasSubstr("5 channels"));
    EXPECT_THAT(refusal("P7 WIDTH 2 HEIGHT 2 NOISE"), testing::HasSubstr("none of PAM"));
}

TEST(PnmReader, WhatFollowsIsAnotherImageOrIsNotKept) {
    EXPECT_THAT(refusal("P5 2 2 255 abcdP5 2 2 255 abcd"),
                testing::StartsWith("has several images"));
    EXPECT_THAT(refusal("P2 2 2 9 1 2 3 4\nP2 2 2 9 1 2 3 4"),
                testing::StartsWith("has several images"));
    EXPECT_EQ(namesOf(read("P2 2 2 9 1 2 3 4 5").metadata.notKept), "what stands behind the image");
    EXPECT_EQ(namesOf(read("P2 2 2 9 1 2 3 4 \n").metadata.notKept), "");
    const ImageFile image = read("P5 2 2 255 abcd\n");
    ASSERT_EQ(image.metadata.notKept.size(), 1U);
    EXPECT_EQ(image.metadata.notKept[0].words, "1 byte behind the image");
}

}  // namespace
