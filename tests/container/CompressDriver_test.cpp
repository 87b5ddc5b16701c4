#include "container/CompressDriver.h"

#include <gtest/gtest.h>

#include "support/FileDrivers.h"

namespace {

using test::Bytes;
using test::compressFile;
using test::Content;
using test::makeImage;
using test::sameBytes;
using test::Wish;

TEST(CompressDriver, FileAndMemoryModeWriteTheSameCompleteStream) {
    const auto gray = makeImage(Content::photo, 1, 8, 61, 47);
    for (const bool upper : {false, true}) {
        const auto run = compressFile(gray, upper);
        EXPECT_EQ(run.status, 0);
        EXPECT_TRUE(sameBytes(test::encode(gray), run.bytes));
    }
}

TEST(CompressDriver, ProgressLinesOfAllInstances) {
    const auto gray = makeImage(Content::photo, 1, 8, 16, 16);
    EXPECT_EQ(compressFile(gray, false).lines,
              "Reading (into 16-bit array)...\nTransforming...\nWriting...\n");
    const auto colour = makeImage(Content::photo, 3, 8, 16, 16);
    EXPECT_EQ(compressFile(colour, false).lines,
              "Reading (into 16-bit array)...\nTransforming YUV...\nTransforming...\nWriting...\n");
    const auto deep = makeImage(Content::photo, 2, 16, 16, 16);
    EXPECT_EQ(compressFile(deep, false).lines,
              "Reading (into 32-bit array)...\nTransforming...\nWriting...\n");
    EXPECT_EQ(compressFile(deep, true, {0.1}).lines,
              "Reading (into 16-bit array)...\nCopying (into 32-bit array)...\nTransforming...\n"
              "Writing...\nGetTotal: 280, total: 35, size: 35\n");
}

TEST(CompressDriver, TheDefaultRateIsOneAndAHalfTimesTheRawSize) {
    const auto run = compressFile(makeImage(Content::photo, 1, 8, 256, 256), true);
    EXPECT_NE(run.lines.find(", size: 98288\n"), std::string::npos) << run.lines;
}

TEST(CompressDriver, ARateCutsTheStreamExactlyAtItsBudget) {
    const auto image = makeImage(Content::photo, 1, 8, 256, 256);
    const auto run = compressFile(image, true, {0.1});
    EXPECT_EQ(run.status, 0);
    EXPECT_NE(run.lines.find("GetTotal: 52296, total: 6537, size: 6537\n"), std::string::npos);
    EXPECT_TRUE(sameBytes(test::prefixOf(test::encode(image), 16 + 6537), run.bytes));
}

TEST(CompressDriver, ATinyRateLeavesNothingBehindTheHeader) {
    const auto run = compressFile(makeImage(Content::photo, 1, 8, 64, 64), true, {1e-9});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(run.bytes.size(), 16U);
    EXPECT_NE(run.lines.find("GetTotal: 0, total: 0, size: 0\n"), std::string::npos);
}

TEST(CompressDriver, ABudgetBeyondAllMemoryGivesTheCompleteStream) {
    const auto image = makeImage(Content::noise, 1, 8, 40, 40);
    for (const double rate : {1e15, -1.0})
        EXPECT_TRUE(sameBytes(test::encode(image), compressFile(image, true, {rate}).bytes))
            << rate;
}

TEST(CompressDriver, FileModeIgnoresTheRate) {
    const auto image = makeImage(Content::photo, 1, 8, 50, 50);
    EXPECT_EQ(compressFile(image, false, {0.1}).bytes, test::encode(image));
}

TEST(CompressDriver, AShortRawFileThrowsThreeInFileMode) {
    auto image = makeImage(Content::photo, 1, 8, 50, 50);
    image.bytes.pop_back();
    try {
        compressFile(image, false);
        FAIL() << "nothing thrown";
    } catch (int number) {
        EXPECT_EQ(number, qmx::kThrownEndOfStream);
    }
}

TEST(CompressDriver, AShortRawFileIsFilledWithZerosInMemoryMode) {
    for (const auto& [bytes, bits] : {std::pair{1, 8}, {3, 8}}) {
        auto image = makeImage(Content::photo, bytes, bits, 50, 50);
        auto zeroed = image;
        image.bytes.resize(1111);
        std::fill(zeroed.bytes.begin() + 1111, zeroed.bytes.end(), static_cast<unsigned char>(0));
        EXPECT_TRUE(sameBytes(test::encode(zeroed), compressFile(image, true).bytes));
    }
}

TEST(CompressDriver, ASuspendedEncoderIsCalledOnceMoreWithTheSameNumber) {  // Quirk 10
    const auto image = makeImage(Content::photo, 3, 8, 40, 40);
    EXPECT_TRUE(sameBytes(test::encode(image, ~std::uint64_t{0}, -5),
                          compressFile(image, false, {0.0, -5}).bytes));
}

TEST(CompressDriver, AFullDiskThatShowsAtCloseIsAFileError) {
    const auto image = makeImage(Content::flat, 1, 8, 8, 8);
    const test::CapturedOutput printed;
    EXPECT_THROW(qmx::compress<short>(test::headerOf(image), test::fileOf(image.bytes).release(),
                                      std::fopen("/dev/full", "wb"), 0.0, true, 0),
                 qmx::FileError);
}

}  // namespace
