#include "convert/RawFile.h"

#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"
#include "convert/PlainWriters.h"

namespace {

using namespace qmx;
using test::Bytes;

TEST(RawFile, LayoutsAreSidesTypeAndSkip) {
    const auto layout = parseRawLayout("640x480:gray12+16");
    ASSERT_TRUE(layout);
    EXPECT_EQ(layout->width, 640U);
    EXPECT_EQ(layout->height, 480U);
    EXPECT_EQ(layout->bytesPerPixel, 2U);
    EXPECT_EQ(layout->bits, 12U);
    EXPECT_EQ(layout->skipBytes, 16U);
    EXPECT_EQ(parseRawLayout("2x3:gray8")->bytesPerPixel, 1U);
    EXPECT_EQ(parseRawLayout("2x3:rgb8")->bytesPerPixel, 3U);
    EXPECT_EQ(parseRawLayout("2x3:gray16")->bits, 0U) << "found from the samples";
    EXPECT_EQ(parseRawLayout("2x3:int16")->otherType, "int16");
}

TEST(RawFile, OtherTextsAreNoLayout) {
    for (const char* text : {"", "2x3", "2x3:", "2x3:gray7", "2x3:gray17", "2x3:gray8+",
                             "2x3:gray8+x", "2:gray8", "x3:gray8", "-2x3:gray8", "2x3:gray8+1 ",
                             "2x3:gray08x", "2x3:GRAY8", "99999999999x3:gray8", "2x3:gray9be"})
        EXPECT_FALSE(parseRawLayout(text)) << text;
}

struct Turned {
    const char* type;
    Bytes samples;
};

TEST(RawFile, SamplesAreTurnedAndTurnedBack) {
    const Turned all[] = {{"gray16", {1, 2, 3, 4, 5, 6, 7, 0x80}},
                          {"gray16be", {2, 1, 4, 3, 6, 5, 0x80, 7}},
                          {"int16", {1, 0x82, 3, 0x84, 5, 0x86, 7, 0}}};
    for (const Turned& turned : all) {
        const auto layout = parseRawLayout("2x2:" + std::string(turned.type) + "+3");
        ImageFile image = readRaw(test::bufferOf("...\1\2\3\4\5\6\7\x80"), *layout, {});
        EXPECT_EQ(test::samplesOf(image), turned.samples) << turned.type;
        test::CTextSink sink;
        writeRaw(image, sink);
        EXPECT_EQ(sink.text, "\1\2\3\4\5\6\7\x80") << turned.type;
        ASSERT_EQ(image.metadata.notKept.size(), 1U);
        EXPECT_EQ(image.metadata.notKept[0].words, "the first 3 bytes");
    }
}

TEST(RawFile, OtherLengthsAreRefused) {
    const auto layout = parseRawLayout("2x2:gray8+1");
    for (const char* bytes : {"abcd", "abcdef"}) {
        const std::string words =
            test::refusalOf([&] { readRaw(test::bufferOf(bytes), *layout, {}); });
        EXPECT_EQ(words, "has " + std::to_string(std::string(bytes).size()) +
                             " bytes; 4 of samples behind 1 were announced by --raw");
    }
    const auto far = parseRawLayout("2x2:gray8+18446744073709551615");
    ASSERT_TRUE(far);
    EXPECT_NE(test::refusalOf([&] { readRaw(test::bufferOf("abc"), *far, {}); }), "");
}

}  // namespace
