#include "container/DecompressDriver.h"

#include <gtest/gtest.h>

#include "support/Drivers.h"
#include "support/StreamBuilder.h"

namespace {

using test::Bytes;
using test::Content;
using test::makeImage;
using test::runDecompress;
using test::sameBytes;

Bytes withHeader(const test::RawImage& image, const Bytes& coefficients) {
    Bytes stream = test::encode(image, 0);
    stream.insert(stream.end(), coefficients.begin(), coefficients.end());
    return stream;
}

TEST(DecompressDriver, RestoresEverySampleTypeInBothModes) {
    const auto gray = makeImage(Content::photo, 1, 8, 61, 47);
    const auto colour = makeImage(Content::photo, 3, 8, 50, 60);
    const auto twelve = makeImage(Content::photo, 2, 12, 64, 64);
    const auto sixteen = makeImage(Content::photo, 2, 16, 64, 96);
    for (const bool upper : {false, true}) {
        EXPECT_TRUE(sameBytes(gray.bytes, runDecompress<short>(test::encode(gray), upper).output));
        EXPECT_TRUE(
            sameBytes(colour.bytes, runDecompress<short>(test::encode(colour), upper).output));
        EXPECT_TRUE(
            sameBytes(twelve.bytes, runDecompress<short>(test::encode(twelve), upper).output));
        EXPECT_TRUE(
            sameBytes(sixteen.bytes, runDecompress<int>(test::encode(sixteen), upper).output));
    }
}

TEST(DecompressDriver, ProgressLinesOfBothModes) {
    const Bytes gray = test::encode(makeImage(Content::photo, 1, 8, 16, 16));
    EXPECT_EQ((runDecompress<short>(gray, false).lines),
              "Reading...(into 16-bit array)\nTransforming...\nWriting...\n");
    EXPECT_EQ((runDecompress<short>(gray, true).lines),
              "Reading to memory...\nReading...(into 16-bit array)\nTransforming...\n"
              "Copying (into 8-bit array)...\nWriting...\n");
    const Bytes colour = test::encode(makeImage(Content::photo, 3, 8, 16, 16));
    EXPECT_EQ((runDecompress<short>(colour, false).lines),
              "Reading...(into 16-bit array)\nTransforming...\nTransforming RGB...\nWriting...\n");
    const Bytes deep = test::encode(makeImage(Content::photo, 2, 16, 16, 16));
    EXPECT_EQ((runDecompress<int>(deep, true).lines),
              "Reading to memory...\nReading...(into 32-bit array)\nTransforming...\n"
              "Copying (into 16-bit array)...\nWriting...\n");
}

TEST(DecompressDriver, AnInvalidStreamGivesOneAndAnEmptyFile) {
    const auto image = makeImage(Content::flat, 1, 8, 16, 16);
    const Bytes stream =
        withHeader(image, test::StreamBuilder(16, 16, 3).section(2, 0, false, "").end());
    for (const bool upper : {false, true}) {
        const auto run = runDecompress<short>(stream, upper);
        EXPECT_EQ(run.result, 1);
        EXPECT_TRUE(run.output.empty());
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

TEST(DecompressDriver, OnlyACutStreamIsLimitedToTheBitsOfTheHeader) {
    const auto image = makeImage(Content::flat, 1, 8, 2, 2);
    for (const bool upper : {false, true}) {
        const auto whole = runDecompress<short>(withHeader(image, outOfRange().end()), upper);
        EXPECT_EQ(whole.output, (Bytes{44, 253, 7, 0}));
        const auto cut = runDecompress<short>(withHeader(image, outOfRange().cut()), upper);
        EXPECT_EQ(cut.output, (Bytes{255, 0, 7, 0}));
    }
}

TEST(DecompressDriver, BothModesAgreeOnEveryPrefix) {
    const Bytes stream = test::encode(makeImage(Content::photo, 2, 16, 8, 12));
    for (std::size_t size = 16; size <= stream.size(); ++size) {
        const Bytes prefix(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size));
        const auto file = runDecompress<int>(prefix, false);
        const auto memory = runDecompress<int>(prefix, true);
        ASSERT_EQ(file.result, 0);
        ASSERT_EQ(memory.result, 0);
        ASSERT_TRUE(sameBytes(memory.output, file.output)) << size;
    }
}

TEST(DecompressDriver, TheSecondPassOfASuspendedDecoderNeverSuspends) {  // Quirk 10
    const auto image = makeImage(Content::photo, 1, 8, 48, 48);
    const auto run = runDecompress<short>(test::encode(image), false, -5);
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(sameBytes(image.bytes, run.output));
}

TEST(DecompressDriver, ARowThatCannotBeWrittenThrowsThree) {
    const auto image = makeImage(Content::noise, 1, 8, 300, 300);
    const Bytes stream = test::encode(image);
    std::FILE* in = test::fileOf(stream).release();
    std::fseek(in, 16, SEEK_SET);
    testing::internal::CaptureStdout();
    try {
        qmx::decompress<short>(test::headerOf(image), in, test::openFile("/dev/full", "wb"), false,
                               0);
        ADD_FAILURE() << "nothing thrown";
    } catch (int number) {
        EXPECT_EQ(number, qmx::kThrownEndOfStream);
    }
    testing::internal::GetCapturedStdout();
}

}  // namespace
