#include "cli/CommandLine.h"

#include <cmath>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <limits>
#include <vector>

namespace {

using namespace qmx;

using Arguments = std::vector<const char*>;

std::optional<CommandLine> parse(Arguments arguments) {
    arguments.insert(arguments.begin(), "tesk");
    const int count = static_cast<int>(arguments.size());
    arguments.push_back(nullptr);
    return parseCommandLine(count, arguments.data());
}

/// Returns: word and as many arguments behind it, all of them "1".
Arguments wordWith(const char* word, std::size_t arguments) {
    Arguments line(arguments + 1, "1");
    line.front() = word;
    return line;
}

/// A compression whose last arguments vary.
CommandLine compression(const Arguments& last) {
    Arguments arguments{"c", "in.raw", "1", "8", "64", "48", "out.tk"};
    arguments.insert(arguments.end(), last.begin(), last.end());
    return parse(arguments).value();
}

RawGeometry geometry(const char* bytes, const char* bits, const char* width, const char* height) {
    return parse({"c", "in.raw", bytes, bits, width, height, "out.tk"}).value().geometry;
}

/// Returns: the numbers of arguments behind a word, from 0 to 12, that it accepts.
std::vector<std::size_t> acceptedCounts(const char* word) {
    std::vector<std::size_t> accepted;
    for (std::size_t count = 0; count <= 12; ++count)
        if (parse(wordWith(word, count))) accepted.push_back(count);
    return accepted;
}

TEST(CommandLine, NoArgumentsAreNoRequest) {
    EXPECT_FALSE(parse({}));
    const char* const nothing[] = {nullptr};
    EXPECT_FALSE(parseCommandLine(0, nothing));
}

TEST(CommandLine, UnknownWordsAreNoRequestWithAnyCount) {
    for (const char* word : {"x",  "",   "M",  "mm", "mc", "cx", "Cx",  "cC", "CC", "cd",
                             "dx", "Dm", "dd", "DD", "dC", "xc", "mcc", " c", "-c", "1"})
        EXPECT_THAT(acceptedCounts(word), testing::IsEmpty()) << word;
}

TEST(CommandLine, CompressionTakesSixToEightArgumentsBehindTheWord) {
    EXPECT_THAT(acceptedCounts("c"), testing::ElementsAre(6, 7, 8));
    EXPECT_THAT(acceptedCounts("C"), testing::ElementsAre(6, 7, 8));
}

TEST(CommandLine, DecompressionTakesTwoOrThreeArgumentsBehindTheWord) {
    EXPECT_THAT(acceptedCounts("d"), testing::ElementsAre(2, 3));
    EXPECT_THAT(acceptedCounts("D"), testing::ElementsAre(2, 3));
}

TEST(CommandLine, ASecondLetterCKeepsTheCountsWhateverFollowsIt) {
    for (const char* word : {"cc", "Cc", "ccx", "ccc", "cc -"})
        EXPECT_THAT(acceptedCounts(word), testing::ElementsAre(6, 7, 8)) << word;
    for (const char* word : {"dc", "Dc", "dcx", "Dcd"})
        EXPECT_THAT(acceptedCounts(word), testing::ElementsAre(2, 3)) << word;
}

TEST(CommandLine, ASecondLetterCSelectsTheMemoryMode) {
    for (const char* word : {"cc", "Cc", "ccx"}) {
        const auto line = parse(wordWith(word, 6)).value();
        EXPECT_EQ(line.action, Action::compress);
        EXPECT_TRUE(line.inMemory);
        EXPECT_EQ(line.staged, word[0] == 'C');
    }
    for (const char* word : {"dc", "Dc", "dcd"}) {
        const auto line = parse(wordWith(word, 2)).value();
        EXPECT_EQ(line.action, Action::decompress);
        EXPECT_TRUE(line.inMemory);
        EXPECT_EQ(line.staged, word[0] == 'D');
    }
}

TEST(CommandLine, OneLetterSelectsNoMemoryMode) {
    for (const char* word : {"c", "C", "m"})
        EXPECT_FALSE(parse(wordWith(word, 6)).value().inMemory) << word;
    for (const char* word : {"d", "D"})
        EXPECT_FALSE(parse(wordWith(word, 2)).value().inMemory) << word;
}

TEST(CommandLine, MemoryModesTakeNamesAndNumbersInTheSameOrder) {
    const auto line =
        parse({"cc", "in.raw", "2", "12", "640", "480", "out.tk", "0.5", "-3"}).value();
    EXPECT_STREQ(line.inputName, "in.raw");
    EXPECT_STREQ(line.otherName, "out.tk");
    EXPECT_EQ(line.geometry.bytesPerPixel, 2);
    EXPECT_EQ(line.geometry.bitsPerPixel, 12);
    EXPECT_EQ(line.geometry.width, 640);
    EXPECT_EQ(line.geometry.height, 480);
    EXPECT_EQ(line.rate, 0.5);
    EXPECT_EQ(line.rowOrSections, -3);
    EXPECT_STREQ(parse({"dc", "in.tk", "out.raw"}).value().otherName, "out.raw");
}

TEST(CommandLine, ComparisonTakesSixArgumentsBehindTheWord) {
    EXPECT_THAT(acceptedCounts("m"), testing::ElementsAre(6));
}

TEST(CommandLine, WordSelectsActionAndItsCapitalLetterTheUpperFlag) {
    const auto lowerCompress = parse(wordWith("c", 6)).value();
    EXPECT_EQ(lowerCompress.action, Action::compress);
    EXPECT_FALSE(lowerCompress.staged);
    const auto upperCompress = parse(wordWith("C", 6)).value();
    EXPECT_EQ(upperCompress.action, Action::compress);
    EXPECT_TRUE(upperCompress.staged);
    const auto lowerDecompress = parse(wordWith("d", 2)).value();
    EXPECT_EQ(lowerDecompress.action, Action::decompress);
    EXPECT_FALSE(lowerDecompress.staged);
    const auto upperDecompress = parse(wordWith("D", 2)).value();
    EXPECT_EQ(upperDecompress.action, Action::decompress);
    EXPECT_TRUE(upperDecompress.staged);
    EXPECT_EQ(parse(wordWith("m", 6)).value().action, Action::compare);
}

TEST(CommandLine, CompressionTakesNamesAndNumbersInTheirOrder) {
    const auto line = parse({"C", "in.raw", "2", "12", "640", "480", "out.tk"}).value();
    EXPECT_STREQ(line.inputName, "in.raw");
    EXPECT_STREQ(line.otherName, "out.tk");
    EXPECT_EQ(line.geometry.bytesPerPixel, 2);
    EXPECT_EQ(line.geometry.bitsPerPixel, 12);
    EXPECT_EQ(line.geometry.width, 640);
    EXPECT_EQ(line.geometry.height, 480);
}

TEST(CommandLine, ComparisonTakesNamesAndNumbersInTheirOrder) {
    const auto line = parse({"m", "one.raw", "3", "8", "640", "480", "other.raw"}).value();
    EXPECT_STREQ(line.inputName, "one.raw");
    EXPECT_STREQ(line.otherName, "other.raw");
    EXPECT_EQ(line.geometry.bytesPerPixel, 3);
    EXPECT_EQ(line.geometry.bitsPerPixel, 8);
    EXPECT_EQ(line.geometry.width, 640);
    EXPECT_EQ(line.geometry.height, 480);
}

TEST(CommandLine, DecompressionTakesStreamThenRawFileThenExtra) {
    const auto plain = parse({"d", "in.tk", "out.raw"}).value();
    EXPECT_STREQ(plain.inputName, "in.tk");
    EXPECT_STREQ(plain.otherName, "out.raw");
    EXPECT_EQ(plain.rowOrSections, 0);
    EXPECT_EQ(parse({"D", "in.tk", "out.raw", "-12"}).value().rowOrSections, -12);
}

TEST(CommandLine, WithoutRateBothRateAndExtraAreZero) {
    EXPECT_EQ(compression({}).rate, 0.0);
    EXPECT_EQ(compression({}).rowOrSections, 0);
}

TEST(CommandLine, WithRateOnlyExtraIsZero) {
    EXPECT_EQ(compression({"0.1"}).rate, 0.1);
    EXPECT_EQ(compression({"0.1"}).rowOrSections, 0);
}

TEST(CommandLine, ExtraFollowsRate) {
    EXPECT_EQ(compression({"0.25", "-7"}).rate, 0.25);
    EXPECT_EQ(compression({"0.25", "-7"}).rowOrSections, -7);
}

TEST(CommandLine, RatesReadLikeFloatingPointNumbersOfTheCLibrary) {
    EXPECT_EQ(compression({"-1"}).rate, -1.0);
    EXPECT_EQ(compression({"1e300"}).rate, 1e300);
    EXPECT_EQ(compression({"0x1p-3"}).rate, 0.125);
    EXPECT_EQ(compression({".5x"}).rate, 0.5);
    EXPECT_EQ(compression({"half"}).rate, 0.0);
    EXPECT_EQ(compression({""}).rate, 0.0);
    EXPECT_EQ(compression({"-inf"}).rate, -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(compression({"nan"}).rate));
}

TEST(CommandLine, WhatIsNoNumberReadsAsZeroOrUpToTheFirstOtherCharacter) {
    const auto g = geometry("one", "8bits", " 64", "0x40");
    EXPECT_EQ(g.bytesPerPixel, 0);
    EXPECT_EQ(g.bitsPerPixel, 8);
    EXPECT_EQ(g.width, 64);
    EXPECT_EQ(g.height, 0);
    EXPECT_EQ(compression({"1", "row"}).rowOrSections, 0);
}

TEST(CommandLine, NumbersAreDecimalEvenWithLeadingZeros) {
    EXPECT_EQ(geometry("01", "010", "1", "1").bitsPerPixel, 10);
}

TEST(CommandLine, GeometryIsNotTruncatedYet) {
    const auto g = geometry("257", "264", "70000", "99999999999999999999");
    EXPECT_EQ(g.bytesPerPixel, 257);
    EXPECT_EQ(g.bitsPerPixel, 264);
    EXPECT_EQ(g.width, 70000);
    EXPECT_EQ(g.height, std::numeric_limits<long>::max());
    EXPECT_EQ(geometry("-1", "8", "1", "1").bytesPerPixel, -1);
}

TEST(CommandLine, ExtraKeepsItsLow32Bits) {
    EXPECT_EQ(compression({"1", "4294967301"}).rowOrSections, 5);
    EXPECT_EQ(parse({"d", "in.tk", "out.raw", "-4294967301"}).value().rowOrSections, -5);
    EXPECT_EQ(parse({"d", "in.tk", "out.raw", "2147483648"}).value().rowOrSections,
              std::numeric_limits<int>::min());
}

TEST(CommandLine, UsagePrintsTheTextAndReturnsTheStatus) {
    testing::internal::CaptureStdout();
    EXPECT_EQ(usage(7), 7);
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "Usage:\n"
              "tesk c|C rawfile bytes/pixel bits/pixel xsize ysize wavfile [rate]\n"
              "tesk d|D wavfile rawfile\n"
              "\n"
              "tesk m rawfile1 bytes/pixel bits/pixel xsize ysize rawfile2\n"
              "\n"
              "(uppercase denotes compression/decompression stream to/from memory)\n");
}

}  // namespace
