#include "convert/NpyReader.h"

#include <gmock/gmock.h>

#include "convert/ConvertTestSupport.h"

namespace {

using namespace qmx;
using test::Bytes;
using testing::HasSubstr;
using testing::StartsWith;

std::string npy(const std::string& type, const std::string& shape, const std::string& samples,
                const std::string& order = "False") {
    const std::string text =
        "{'descr': '" + type + "', 'fortran_order': " + order + ", 'shape': " + shape + ", }\n";
    return std::string("\x93NUMPY\1\0", 8) + static_cast<char>(text.size()) + '\0' + text + samples;
}

ImageFile read(const std::string& file) {
    return readNpy(test::bufferOf(file), {});
}

std::string refusal(const std::string& file) {
    return test::refusalOf([&] { read(file); });
}

TEST(NpyReader, RowsOfBytesAndOfShortsOfBothOrders) {
    const ImageFile bytes = read(npy("|u1", "(2, 3)", "abcdef"));
    EXPECT_EQ(bytes.geometry.width, 3U);
    EXPECT_EQ(bytes.geometry.height, 2U);
    EXPECT_EQ(bytes.geometry.bits_per_pixel, 8U);
    EXPECT_EQ(test::samplesOf(bytes), Bytes({'a', 'b', 'c', 'd', 'e', 'f'}));
    EXPECT_EQ(test::samplesOf(read(npy("<u2", "(2, 2)", "abcdefgh"))),
              Bytes({'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'}));
    EXPECT_EQ(test::samplesOf(read(npy(">u2", "(2, 2)", "abcdefgh"))),
              Bytes({'b', 'a', 'd', 'c', 'f', 'e', 'h', 'g'}));
}

TEST(NpyReader, FortranOrderIsTurned) {
    EXPECT_EQ(test::samplesOf(read(npy("|u1", "(2, 3)", "adbecf", "True"))),
              Bytes({'a', 'b', 'c', 'd', 'e', 'f'}));
    EXPECT_EQ(test::samplesOf(read(npy("<u2", "(2, 2)", "aAcCbBdD", "True"))),
              Bytes({'a', 'A', 'b', 'B', 'c', 'C', 'd', 'D'}));
    // (row, column, channel), the row fastest.
    EXPECT_EQ(test::samplesOf(read(npy("|u1", "(2, 2, 3)", "RrSsGgHhBbCc", "True"))),
              Bytes({'R', 'G', 'B', 'S', 'H', 'C', 'r', 'g', 'b', 's', 'h', 'c'}));
}

TEST(NpyReader, ALastAxisOfThreeIsColour) {
    EXPECT_EQ(read(npy("|u1", "(2, 2, 3)", "abcdefghijkl")).geometry.bytes_per_pixel, 3U);
    EXPECT_THAT(refusal(npy("<u2", "(2, 2, 3)", "")), StartsWith("is 16-bit RGB"));
    EXPECT_THAT(refusal(npy("|u1", "(2, 2, 4)", "")), StartsWith("is an array of 4 channels"));
}

TEST(NpyReader, OtherSamplesAreRefusedWithWhatToDo) {
    EXPECT_THAT(
        refusal(npy("<f4", "(2, 2)", "")),
        StartsWith("has floating-point samples; a stream holds whole numbers of 1 to 16 bits: "));
    EXPECT_THAT(refusal(npy("<c8", "(2, 2)", "")), StartsWith("has complex samples; "));
    EXPECT_THAT(refusal(npy("<u4", "(2, 2)", "")),
                StartsWith("has samples of more than 16 bits; "));
    EXPECT_THAT(refusal(npy("|b1", "(2, 2)", "")), StartsWith("has samples that are no numbers; "));
    EXPECT_THAT(refusal(npy("|i1", "(2, 2)", "")), StartsWith("has signed samples; "));
    const std::string file = npy("<i2", "(3, 4)", std::string(24, 'x'));
    EXPECT_THAT(refusal(file), HasSubstr("--raw 4x3:int16+" + std::to_string(file.size() - 24)));
}

TEST(NpyReader, OtherShapesAreRefused) {
    EXPECT_THAT(refusal(npy("|u1", "(7,)", "")), HasSubstr("fewer than two dimensions"));
    EXPECT_THAT(refusal(npy("|u1", "(12, 20, 30)", "")), StartsWith("has 12 pages; "));
    EXPECT_THAT(refusal(npy("|u1", "(2, 6, 20, 30)", "")), StartsWith("has 12 pages; "));
    EXPECT_THAT(refusal(npy("|u1", "(1, 30)", "")), StartsWith("has a side of 1"));
    EXPECT_THAT(refusal(npy("|u1", "(70000, 30)", "")), StartsWith("is 30 x 70000 pixels"));
}

TEST(NpyReader, SidesOfOneAroundAPictureAreLeftOut) {
    for (const char* shape : {"(1, 2, 3)", "(2, 3, 1)", "(1, 1, 2, 3, 1)"}) {
        const ImageFile image = read(npy("|u1", shape, "abcdef"));
        EXPECT_EQ(image.geometry.width, 3U) << shape;
        EXPECT_EQ(test::samplesOf(image), Bytes({'a', 'b', 'c', 'd', 'e', 'f'}));
        EXPECT_EQ(namesOf(image.metadata.notKept), "sides of 1 of the array");
    }
}

TEST(NpyReader, AllPrefixesAreRefused) {
    const std::string file = npy("<u2", "(5, 3)", std::string(30, 'x'));
    EXPECT_EQ(refusal(file), "");
    for (std::size_t length = 6; length < file.size(); ++length)
        EXPECT_NE(refusal(file.substr(0, length)), "") << length;
    EXPECT_EQ(refusal(file.substr(0, file.size() - 13)), "ends in row 3 of 5");
}

/// Some bytes of a head are white space or names that nobody misses: then the array is the same.
TEST(NpyReader, DamagedHeadsAreRefusedOrSayTheSame) {
    const std::string fine = npy("|u1", "(2, 2)", "abcd");
    int refused = 0;
    for (std::size_t i = 6; i < fine.size() - 4; ++i) {
        std::string damaged = fine;
        damaged[i] = '\xFF';
        if (!refusal(damaged).empty()) {
            ++refused;
            continue;
        }
        const ImageFile image = read(damaged);
        EXPECT_EQ(image.geometry.width, 2U) << i;
        EXPECT_EQ(test::samplesOf(image), Bytes({'a', 'b', 'c', 'd'})) << i;
    }
    EXPECT_GT(refused, 30);
    EXPECT_THAT(refusal(std::string("\x93NUMPY\4\0", 8) + "12345678"), HasSubstr("version"));
    EXPECT_THAT(refusal(std::string("\x93NUMPY\2\0\xFF\xFF\xFF\xFF", 12) + "12345678"),
                HasSubstr("no end"));
}

}  // namespace
