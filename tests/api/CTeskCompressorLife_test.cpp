#include <fstream>
#include <gtest/gtest.h>
#include <sstream>

#include "api/CTeskCompressor.h"
#include "coding/syntax/SectionSyntax.h"
#include "container/Budget.h"
#include "support/CodecObjects.h"
#include "wavelet/LevelGeometry.h"

// Results of calls in any order, golden streams, and the width of coefficients.

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::RawImage;

/// Calls: c compress, s stop, k kill. The results are those of the compressions.
struct Life {
    const char* calls;
    unsigned long budgetBytes;
    int bytesPerPixel;
    std::vector<int> results;
};

const Life kLives[] = {
    {"cc", 5000, 1, {0, 0}},     {"ccc", 0, 1, {0, 0, 0}},         {"cc", 100, 1, {4, 4}},
    {"csc", 5000, 1, {0, 0}},    {"ckc", 5000, 3, {0, 0}},         {"cksc", 100, 1, {4, 4}},
    {"scc", 5000, 1, {8, 8}},    {"ssccc", 0, 3, {8, 8, 8}},       {"scscc", 100, 1, {8, 8, 8}},
    {"kcc", 5000, 1, {8, 8}},    {"kccc", 100, 3, {8, 8, 8}},      {"kskcsc", 0, 1, {8, 8}},
    {"cc", 15, 1, {4, 4}},       {"skckc", 1, 1, {4, 4}},          {"cc", 0, 0, {128, 128}},
    {"ckc", 100, 4, {128, 128}}, {"skcsc", 5000, 255, {128, 128}}, {"c", 16, 4, {128}},
};

TEST(CTeskCompressor, TheFirstResultStands) {
    const RawImage image = test::makeImage(Content::photo, 3, 8, 24, 24);
    for (const Life& life : kLives) {
        SCOPED_TRACE(life.calls + std::string(" with ") + std::to_string(life.budgetBytes));
        RawImage other = image;
        other.bytesPerPixel = life.bytesPerPixel;
        test::BlockLog log;
        test::LoggingCompressor compressor(other, life.budgetBytes, true, log);
        std::vector<int> results;
        Bytes stream;
        for (const char* call = life.calls; *call != 0; ++call) {
            if (*call == 's') compressor.stop();
            if (*call == 'k') compressor.kill();
            if (*call != 'c') continue;
            results.push_back(compressor.compress());
            if (results.size() == 1) stream = test::streamOf(compressor);
        }
        EXPECT_EQ(results, life.results);
        EXPECT_EQ(test::streamOf(compressor), stream);
        const bool hasBlock =
            isUsable(results[0]) && life.budgetBytes != 15 && life.budgetBytes != 1;
        EXPECT_EQ(log.asked.size(), hasBlock ? 1U : 0U);
        EXPECT_EQ(stream.empty(), !hasBlock);
    }
}

TEST(CTeskCompressor, AStopBeforeTheEndOfARowIsObeyedByImagesOfOneRow) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 50, 1);
    CTeskCompressor compressor(50, 1, 8, 1, image.bytes.data(), 0, true);
    compressor.stop();
    EXPECT_EQ(compressor.compress(), kSuspended);
}

/// Returns: the lines of the manifest that make streams with a word, as their words.
std::vector<std::vector<std::string>> goldenCommands(const std::string& word) {
    std::ifstream manifest(TESK_GOLDEN_FOLDER "/MANIFEST.tsv");
    std::vector<std::vector<std::string>> commands;
    for (std::string line; std::getline(manifest, line);) {
        std::istringstream columns(line);
        std::string stream;
        std::string arguments;
        std::getline(columns, stream, '\t');
        std::getline(columns, arguments, '\t');
        std::istringstream parts(arguments);
        std::vector<std::string> command;
        for (std::string part; parts >> part;)
            command.push_back(part);
        if (!command.empty() && command[0] == word) commands.push_back(command);
    }
    return commands;
}

TEST(CTeskCompressor, GivesTheGoldenStreams) {
    const std::string folder = TESK_GOLDEN_FOLDER "/";
    const auto commands = goldenCommands("cc");
    EXPECT_GE(commands.size(), 30U);
    int withoutRate = 0;
    for (const auto& command : commands) {
        ASSERT_GE(command.size(), 7U);
        SCOPED_TRACE(command[6]);
        const RawImage image{std::stoi(command[2]), std::stoi(command[3]), std::stoi(command[4]),
                             std::stoi(command[5]), test::readFile(folder + command[1])};
        const double rate = command.size() > 7 ? std::stod(command[7]) : 0.0;
        const auto budget = truncateToUnsigned(static_cast<double>(image.bytes.size()) * rate);
        const test::Outcome coded = test::compressObject(image, budget);
        EXPECT_TRUE(isUsable(coded.status));
        EXPECT_TRUE(test::sameBytes(test::readFile(folder + command[6]), coded.bytes));
        if (rate == 0.0) ++withoutRate;
    }
    EXPECT_GE(withoutRate, 15);
}

TEST(CTeskCompressor, TheEstimateCutsTinyFlatImagesOnly) {
    // 8-bit, all 200, 2 x 2: the estimate is 39 bytes, the complete stream needs 26 behind the header.
    const RawImage tiny{1, 8, 2, 2, Bytes(4, 200)};
    const test::Outcome cut = test::compressObject(tiny, 0);
    EXPECT_EQ(cut.status, kCut);
    EXPECT_EQ(cut.bytes, test::prefixOf(test::encode(tiny), 39));
    EXPECT_EQ(test::encode(tiny).size(), 42U);
    // 64 x 64, all 0: the estimate is 34 bytes, the complete stream needs 14 behind the header.
    const RawImage zero{1, 8, 64, 64, Bytes(4096, 0)};
    test::BlockLog log;
    test::LoggingCompressor compressor(zero, 0, true, log);
    EXPECT_EQ(compressor.compress(), kComplete);
    EXPECT_EQ(log.asked, std::vector<unsigned long>{34});
    EXPECT_EQ(test::streamOf(compressor), test::encode(zero));
    EXPECT_EQ(compressor.getStreamSize(), 30U);
}

// Without coefficients the estimate consists of the headers of two sections for each order, a little too
// many bits, and the 19 bits around them.
TEST(CTeskCompressor, TheEstimateIsRoundedUpToWholeBytes) {
    int wholeBytes = 0;
    for (const int height : {2, 4, 9, 20, 40, 70})
        for (int width = 2; width <= 300; width += 2) {
            unsigned long bits = 19;
            for (int order = 0; order <= levelCount(width, height); ++order)
                bits += 22 + 2 * static_cast<unsigned long>(
                                     lengthFieldBits(sampleCountBits(width, height), order));
            bits += bits / 20;
            const unsigned long sizeBytes = (bits + 7) / 8;
            const RawImage zeros{1, 8, width, height,
                                 Bytes(static_cast<std::size_t>(width * height), 0)};
            test::BlockLog log;
            test::LoggingCompressor(zeros, 0, true, log).compress();
            // A size without room for the header is that of the stream alone.
            EXPECT_EQ(log.asked[0], sizeBytes < 16 ? sizeBytes + 16 : sizeBytes) << width;
            wholeBytes += bits % 8 == 0 ? 1 : 0;
        }
    EXPECT_GT(wholeBytes, 0) << "or one bit more would not be noticed";
}

TEST(CTeskCompressor, AnEstimateBelowTheHeaderIsTheSizeOfTheStream) {
    const RawImage none{1, 8, 0, 5, {}};
    test::BlockLog log;
    test::LoggingCompressor compressor(none, 0, true, log);
    EXPECT_EQ(compressor.compress(), kComplete);
    EXPECT_EQ(log.asked, std::vector<unsigned long>{16 + 3});
    EXPECT_EQ(test::streamOf(compressor), test::encode(none));
}

/// Returns: an image whose samples use all 16 bits, with another number in its header.
RawImage wideSamples(int bitsPerPixel) {
    RawImage image = test::makeImage(Content::noise, 2, 16, 32, 32);
    for (std::size_t i = 0; i < image.bytes.size(); i += 5)
        image.bytes[i] = image.bytes[i | 1] = 0xFF;
    image.bitsPerPixel = bitsPerPixel;
    return image;
}

TEST(CTeskCompressor, SamplesOf12BitsHaveWideCoefficients) {
    const RawImage image = wideSamples(12);
    const Bytes stream = test::compressObject(image).bytes;
    EXPECT_EQ(test::decompressObject(stream).bytes, image.bytes);
    EXPECT_NE(stream, test::encode(image)) << "files have narrow ones up to 12 bits";
}

TEST(CTeskCompressor, SamplesOf11BitsHaveNarrowCoefficients) {
    const RawImage image = wideSamples(11);
    const Bytes stream = test::compressObject(image).bytes;
    EXPECT_NE(test::decompressObject(stream).bytes, image.bytes);
    EXPECT_EQ(stream, test::encode(image));
}

TEST(CTeskCompressor, NumbersAreTruncatedToTheFieldsOfTheHeader) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 9, 9);
    CTeskCompressor compressor(65536 + 9, 65536 + 9, 256 + 8, 256 + 1, image.bytes.data(),
                               test::kAmpleBudget, true);
    EXPECT_EQ(compressor.compress(), kComplete);
    EXPECT_EQ(test::streamOf(compressor), test::encode(image));
}

}  // namespace
