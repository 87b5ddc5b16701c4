#include "api/CTeskCompressor.h"

#include <gtest/gtest.h>
#include <limits>
#include <new>

#include "support/CodecObjects.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::compressObject;
using test::Content;
using test::RawImage;
using test::sameBytes;

constexpr unsigned long kMost = std::numeric_limits<unsigned long>::max();

void expectLibraryStream(Content content, int width, int height) {
    for (const test::SampleKind kind : test::kKindsOfBothProfiles) {
        const RawImage image =
            test::makeImage(content, kind.bytesPerPixel, kind.bitsPerPixel, width, height);
        const test::Outcome coded = compressObject(image);
        EXPECT_EQ(coded.status, kComplete);
        EXPECT_TRUE(sameBytes(test::encode(image), coded.bytes))
            << width << " x " << height << ", " << kind.bytesPerPixel << " bytes, "
            << kind.bitsPerPixel << " bits";
    }
}

TEST(CTeskCompressor, SmallImagesOfAllSizesGiveTheStreamOfTheLibrary) {
    for (int width = 0; width <= 20; ++width)
        for (int height = 0; height <= 20; ++height)
            expectLibraryStream(Content::noise, width, height);
}

TEST(CTeskCompressor, ThinImagesGiveTheStreamOfTheLibrary) {
    for (const int length : {1, 2, 3, 8, 31, 64, 257, 2000}) {
        expectLibraryStream(Content::photo, 1, length);
        expectLibraryStream(Content::photo, length, 1);
    }
}

TEST(CTeskCompressor, ImagesOfAllContentsGiveTheStreamOfTheLibrary) {
    for (const Content content :
         {Content::flat, Content::gradient, Content::noise, Content::photo, Content::sparse}) {
        SCOPED_TRACE(test::nameOf(content));
        expectLibraryStream(content, 64, 64);
        expectLibraryStream(content, 37, 53);
    }
}

/// An image whose stream is longer than all budgets that are tried.
class Budgets : public testing::Test {
protected:
    RawImage image = test::makeImage(Content::noise, 1, 8, 20, 20);
    Bytes complete = test::encode(image);
};

TEST_F(Budgets, BelowTheHeaderThereIsNoBlock) {
    for (unsigned long budget = 1; budget < 16; ++budget) {
        test::BlockLog log;
        test::LoggingCompressor compressor(image, budget, true, log);
        EXPECT_EQ(compressor.compress(), kCut);
        compressor.stop();
        compressor.kill();
        EXPECT_EQ(compressor.compress(), kCut);
        EXPECT_EQ(compressor.getBlock(), nullptr);
        EXPECT_EQ(compressor.getStreamSize(), 0U);
        EXPECT_TRUE(log.asked.empty());
    }
}

TEST_F(Budgets, OfTheHeaderAloneCountsAsComplete) {  // Quirk 1
    const test::Outcome coded = compressObject(image, 16);
    EXPECT_EQ(coded.status, kComplete);
    EXPECT_EQ(coded.bytes, test::prefixOf(complete, 16));
}

TEST_F(Budgets, CutTheStreamExactly) {
    ASSERT_GT(complete.size(), 300U);
    for (unsigned long budget = 17; budget <= complete.size() + 5; ++budget) {
        SCOPED_TRACE(budget);
        const test::Outcome coded = compressObject(image, budget);
        EXPECT_EQ(coded.status, budget < complete.size() ? kCut : kComplete);
        const std::size_t expected = std::min<std::size_t>(budget, complete.size());
        EXPECT_TRUE(sameBytes(test::prefixOf(complete, expected), coded.bytes));
    }
}

TEST_F(Budgets, AreTheSizeOfTheBlockUpToABound) {
    for (const unsigned long budget : {16UL, 17UL, 300UL, 5000UL, 1UL << 62, kMost - 16, kMost}) {
        SCOPED_TRACE(budget);
        test::BlockLog log;
        test::LoggingCompressor compressor(image, budget, true, log);
        EXPECT_EQ(compressor.compress(), budget == 17 || budget == 300 ? kCut : kComplete);
        ASSERT_EQ(log.asked.size(), 1U);
        EXPECT_EQ(log.asked[0], std::min(budget, log.asked[0]));
        if (budget <= 5000) {
            EXPECT_EQ(log.asked[0], budget);
        } else {
            EXPECT_LT(log.asked[0], 100000U);
            EXPECT_EQ(test::streamOf(compressor), complete);
        }
    }
}

TEST(CTeskCompressor, ABlockBelongsToTheCompressorIfItOwnsIt) {
    const RawImage image = test::makeImage(Content::photo, 3, 8, 9, 9);
    for (const bool owns : {true, false}) {
        test::BlockLog log;
        unsigned char* block = nullptr;
        {
            test::LoggingCompressor compressor(image, 200, owns, log);
            EXPECT_EQ(compressor.getBlock(), nullptr);
            EXPECT_EQ(compressor.getStreamSize(), 0U);
            compressor.compress();
            block = compressor.getBlock();
            EXPECT_NE(block, nullptr);
            EXPECT_EQ(log.freed, 0);
        }
        EXPECT_EQ(log.freed, owns ? 1 : 0);
        if (owns) continue;
        EXPECT_EQ(Bytes(block, block + 200), test::prefixOf(test::encode(image), 200));
        CTeskCompressor(0, 0, 8, 1, nullptr, 16, true).freeBlock(block);
    }
}

TEST(CTeskCompressor, BlocksStandAtMultiplesOf8) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 9, 9);
    CTeskCompressor compressor(9, 9, 8, 1, image.bytes.data(), 77, true);
    compressor.compress();
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(compressor.getBlock()) % 8, 0U);
}

TEST(CTeskCompressor, ABlockThatCannotBeHadThrowsBadAlloc) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 9, 9);
    for (const unsigned long budget : {0UL, 16UL, 100UL}) {
        test::BlockLog log;
        log.isEmpty = true;
        test::LoggingCompressor compressor(image, budget, true, log);
        EXPECT_THROW(compressor.compress(), std::bad_alloc);
        EXPECT_EQ(compressor.compress(), kCut) << "the failure stands";
        EXPECT_EQ(compressor.getBlock(), nullptr);
        EXPECT_EQ(compressor.getStreamSize(), 0U);
    }
}

TEST(CTeskCompressor, PixelsMayStandAtAnyAddressAndEndWithTheConstructor) {
    for (const test::SampleKind kind : test::kKindsOfBothProfiles) {
        const RawImage image =
            test::makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 19, 11);
        for (std::size_t shift = 0; shift < 4; ++shift) {
            Bytes pixels(shift, 0xEE);
            pixels.insert(pixels.end(), image.bytes.begin(), image.bytes.end());
            CTeskCompressor compressor(19, 11, kind.bitsPerPixel, kind.bytesPerPixel,
                                       pixels.data() + shift, test::kAmpleBudget, true);
            std::fill(pixels.begin(), pixels.end(), static_cast<unsigned char>(0));
            EXPECT_EQ(compressor.compress(), kComplete);
            EXPECT_TRUE(sameBytes(test::encode(image), test::streamOf(compressor)));
        }
    }
}

TEST(CTeskCompressor, BlocksMayStandAtAnyAddress) {
    const RawImage image = test::makeImage(Content::photo, 1, 8, 33, 18);
    test::BlockLog log;
    for (log.shift = 1; log.shift < 8; ++log.shift) {
        test::LoggingCompressor compressor(image, 0, true, log);
        compressor.compress();
        const Bytes stream = test::streamOf(compressor);
        EXPECT_EQ(stream, test::prefixOf(test::encode(image), stream.size()));
    }
}

}  // namespace
