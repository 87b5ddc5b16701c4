#include "container/DecompressDriver.h"

#include <gtest/gtest.h>

#include "support/FileDrivers.h"
#include "support/StreamBuilder.h"

namespace {

using test::Bytes;
using test::Content;
using test::decompressFile;
using test::headed;
using test::headerOf;
using test::makeImage;
using test::sameBytes;

TEST(DecompressDriver, RestoresEverySampleTypeInBothModes) {
    for (const auto& image :
         {makeImage(Content::photo, 1, 8, 61, 47), makeImage(Content::photo, 3, 8, 50, 60),
          makeImage(Content::photo, 2, 12, 64, 64), makeImage(Content::photo, 2, 16, 64, 96)})
        for (const bool upper : {false, true})
            EXPECT_TRUE(sameBytes(image.bytes, decompressFile(test::encode(image), upper).bytes));
}

TEST(DecompressDriver, ProgressLinesOfBothModes) {
    const Bytes gray = test::encode(makeImage(Content::photo, 1, 8, 16, 16));
    EXPECT_EQ(decompressFile(gray, false).lines,
              "Reading...(into 16-bit array)\nTransforming...\nWriting...\n");
    EXPECT_EQ(decompressFile(gray, true).lines,
              "Reading to memory...\nReading...(into 16-bit array)\nTransforming...\n"
              "Copying (into 8-bit array)...\nWriting...\n");
    const Bytes colour = test::encode(makeImage(Content::photo, 3, 8, 16, 16));
    EXPECT_EQ(decompressFile(colour, false).lines,
              "Reading...(into 16-bit array)\nTransforming...\nTransforming RGB...\nWriting...\n");
    const Bytes deep = test::encode(makeImage(Content::photo, 2, 16, 16, 16));
    EXPECT_EQ(decompressFile(deep, true).lines,
              "Reading to memory...\nReading...(into 32-bit array)\nTransforming...\n"
              "Copying (into 16-bit array)...\nWriting...\n");
}

TEST(DecompressDriver, AnInvalidStreamGivesOneAndAnEmptyFile) {
    const Bytes stream = headed(headerOf(makeImage(Content::flat, 1, 8, 16, 16)),
                                test::StreamBuilder(16, 16, 3).section(2, 0, false, "").end());
    for (const bool upper : {false, true})
        for (const int extra : {0, -5}) {
            const auto run = decompressFile(stream, upper, extra);
            EXPECT_EQ(run.status, 1);
            EXPECT_TRUE(run.bytes.empty());
            EXPECT_NE(run.lines.find("ERROR: Decompression error 128\n"), std::string::npos);
        }
}

/// A 2 x 2 stream whose samples are 300, -3, 7 and 0.
test::StreamBuilder outOfRange() {
    test::StreamBuilder stream(2, 2, 8);
    stream.n(0, "1 0 0011").n(0, "").n(0, "").n(0, "").n(0, "").n(0, "");
    stream.n(0, "01 0 01").n(0, "1 1 01").n(0, "");
    for (const char* bits : {"0", "0", "1", "0", "1"})
        stream.u(0, bits);
    return stream.u(0, "1").u(0, "01").u(0, "011");
}

/// Returns: the samples of a 2 x 2 stream.
Bytes samplesOf(const Bytes& sections, bool upper, int extra) {
    return decompressFile(headed(qmx::makeHeader(1, 8, 2, 2), sections), upper, extra).bytes;
}

TEST(DecompressDriver, OnlyACutStreamIsLimitedToTheBitsOfTheHeader) {
    for (const bool upper : {false, true}) {
        EXPECT_EQ(samplesOf(outOfRange().end(), upper, 0), (Bytes{44, 253, 7, 0}));
        EXPECT_EQ(samplesOf(outOfRange().cut(), upper, 0), (Bytes{255, 0, 7, 0}));
    }
}

TEST(DecompressDriver, ACutStreamThatWasSuspendedIsTakenForComplete) {  // Quirk 12
    for (const bool upper : {false, true}) {
        EXPECT_EQ(samplesOf(outOfRange().cut(), upper, -1), (Bytes{44, 253, 7, 0}));
        EXPECT_EQ(samplesOf(outOfRange().cut(), upper, -2), (Bytes{255, 0, 7, 0}))
            << "there is no row behind which to pause";
    }
}

TEST(DecompressDriver, TheSecondPassOfASuspendedDecoderNeverSuspends) {  // Quirk 10
    const auto image = makeImage(Content::photo, 1, 8, 48, 48);
    const auto run = decompressFile(test::encode(image), false, -5);
    EXPECT_EQ(run.status, 0);
    EXPECT_TRUE(sameBytes(image.bytes, run.bytes));
}

/// Decompresses the stream of a small image from one file to another.
void runOn(const char* inName, const char* outName, bool upper) {
    const auto image = makeImage(Content::flat, 1, 8, 8, 8);
    std::FILE* in =
        inName == nullptr ? test::fileOf(test::encode(image)).release() : std::fopen(inName, "rb");
    std::fseek(in, 16, SEEK_SET);
    const test::CapturedOutput printed;
    qmx::decompress<short>(headerOf(image), in, std::fopen(outName, "wb"), upper, 0);
}

TEST(DecompressDriver, AFullDiskThatShowsAtCloseIsAFileError) {
    for (const bool upper : {false, true})
        EXPECT_THROW(runOn(nullptr, "/dev/full", upper), qmx::FileError);
}

TEST(DecompressDriver, AStreamThatCannotBeReadIsAFileError) {
    for (const bool upper : {false, true})
        EXPECT_THROW(runOn("/", "/dev/null", upper), qmx::FileError);
}

TEST(DecompressDriver, ARowThatCannotBeWrittenThrowsThree) {
    const auto image = makeImage(Content::noise, 1, 8, 300, 300);
    std::FILE* in = test::fileOf(test::encode(image)).release();
    std::fseek(in, 16, SEEK_SET);
    const test::CapturedOutput printed;
    try {
        qmx::decompress<short>(headerOf(image), in, std::fopen("/dev/full", "wb"), false, 0);
        ADD_FAILURE() << "nothing thrown";
    } catch (int number) {
        EXPECT_EQ(number, qmx::kThrownEndOfStream);
    }
}

}  // namespace
