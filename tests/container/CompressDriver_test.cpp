#include "container/CompressDriver.h"

#include <gtest/gtest.h>

#include "support/Drivers.h"

namespace {

using test::Bytes;
using test::Content;
using test::makeImage;
using test::runCompress;
using test::sameBytes;

Bytes withoutHeader(const Bytes& stream) {
    return {stream.begin() + 16, stream.end()};
}

TEST(CompressDriver, FileAndMemoryModeWriteTheSameCompleteStream) {
    const auto gray = makeImage(Content::photo, 1, 8, 61, 47);
    const auto file = runCompress<short>(gray, 0.0, false);
    const auto memory = runCompress<short>(gray, 0.0, true);
    EXPECT_EQ(file.result, 0);
    EXPECT_EQ(memory.result, 0);
    EXPECT_TRUE(sameBytes(withoutHeader(test::encode(gray)), file.output));
    EXPECT_TRUE(sameBytes(file.output, memory.output));
}

TEST(CompressDriver, ProgressLinesOfAllInstances) {
    const auto gray = makeImage(Content::photo, 1, 8, 16, 16);
    EXPECT_EQ((runCompress<short>(gray, 0, false).lines),
              "Reading (into 16-bit array)...\nTransforming...\nWriting...\n");
    const auto colour = makeImage(Content::photo, 3, 8, 16, 16);
    EXPECT_EQ((runCompress<short>(colour, 0, false).lines),
              "Reading (into 16-bit array)...\nTransforming YUV...\nTransforming...\nWriting...\n");
    const auto deep = makeImage(Content::photo, 2, 16, 16, 16);
    EXPECT_EQ((runCompress<int>(deep, 0, false).lines),
              "Reading (into 32-bit array)...\nTransforming...\nWriting...\n");
    EXPECT_EQ((runCompress<int>(deep, 0.1, true).lines),
              "Reading (into 16-bit array)...\nCopying (into 32-bit array)...\nTransforming...\n"
              "Writing...\nGetTotal: 280, total: 35, size: 35\n");
}

TEST(CompressDriver, TheDefaultRateIsOneAndAHalfTimesTheRawSize) {
    const auto run = runCompress<short>(makeImage(Content::photo, 1, 8, 256, 256), 0.0, true);
    EXPECT_NE(run.lines.find(", size: 98288\n"), std::string::npos) << run.lines;
}

TEST(CompressDriver, ARateCutsTheStreamExactlyAtItsBudget) {
    const auto image = makeImage(Content::photo, 1, 8, 256, 256);
    const auto run = runCompress<short>(image, 0.1, true);
    EXPECT_EQ(run.result, 0);
    EXPECT_EQ(run.output.size(), 6537U);
    EXPECT_NE(run.lines.find("GetTotal: 52296, total: 6537, size: 6537\n"), std::string::npos);
    const Bytes complete = withoutHeader(test::encode(image));
    EXPECT_TRUE(std::equal(run.output.begin(), run.output.end(), complete.begin()));
}

TEST(CompressDriver, ATinyRateLeavesNothingBehindTheHeader) {
    const auto run = runCompress<short>(makeImage(Content::photo, 1, 8, 64, 64), 1e-9, true);
    EXPECT_EQ(run.result, 0);
    EXPECT_TRUE(run.output.empty());
    EXPECT_NE(run.lines.find("GetTotal: 0, total: 0, size: 0\n"), std::string::npos);
}

TEST(CompressDriver, ABudgetBeyondAllMemoryGivesTheCompleteStream) {
    const auto image = makeImage(Content::noise, 1, 8, 40, 40);
    for (const double rate : {1e15, -1.0}) {
        const auto run = runCompress<short>(image, rate, true);
        EXPECT_TRUE(sameBytes(withoutHeader(test::encode(image)), run.output)) << rate;
    }
}

TEST(CompressDriver, FileModeIgnoresTheRate) {
    const auto image = makeImage(Content::photo, 1, 8, 50, 50);
    EXPECT_EQ((runCompress<short>(image, 0.1, false).output),
              (runCompress<short>(image, 0.0, false).output));
}

TEST(CompressDriver, AShortRawFileThrowsThreeInFileMode) {
    auto image = makeImage(Content::photo, 1, 8, 50, 50);
    image.bytes.pop_back();
    try {
        runCompress<short>(image, 0.0, false);
        FAIL() << "nothing thrown";
    } catch (int number) {
        EXPECT_EQ(number, qmx::kThrownEndOfStream);
        testing::internal::GetCapturedStdout();
    }
}

TEST(CompressDriver, AShortRawFileIsFilledWithZerosInMemoryMode) {
    for (const auto& [bytes, bits] : {std::pair{1, 8}, {3, 8}}) {
        auto image = makeImage(Content::photo, bytes, bits, 50, 50);
        auto zeroed = image;
        image.bytes.resize(1111);
        std::fill(zeroed.bytes.begin() + 1111, zeroed.bytes.end(), static_cast<unsigned char>(0));
        EXPECT_TRUE(sameBytes(withoutHeader(test::encode(zeroed)),
                              runCompress<short>(image, 0.0, true).output));
    }
}

TEST(CompressDriver, ASuspendedEncoderIsCalledOnceMoreWithTheSameNumber) {  // Quirk 10
    const auto image = makeImage(Content::photo, 3, 8, 40, 40);
    EXPECT_TRUE(sameBytes(withoutHeader(test::encode(image, ~std::uint64_t{0}, -5)),
                          runCompress<short>(image, 0.0, false, -5).output));
}

TEST(CompressDriver, AFullDiskThatShowsAtCloseIsAFileError) {
    const auto image = makeImage(Content::flat, 1, 8, 8, 8);
    testing::internal::CaptureStdout();
    EXPECT_THROW((qmx::compress<short>(test::headerOf(image), test::fileOf(image.bytes).release(),
                                       test::openFile("/dev/full", "wb"), 0.0, true, 0)),
                 qmx::FileError);
    testing::internal::GetCapturedStdout();
}

}  // namespace
