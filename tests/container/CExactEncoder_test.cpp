#include "container/CExactEncoder.h"

#include <gtest/gtest.h>

#include "container/Comparison.h"
#include "support/CodecObjects.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::makeImage;
using test::RawImage;

/// An image as a job, in memory.
struct Job : ImageJob {
    explicit Job(const RawImage& image, const CStopRequest& stopRequest = kNeverStopped)
        : ImageJob{test::headerOf(image), rows, std::pmr::new_delete_resource(), stopRequest},
          rows(image.bytes.data(), header.rawRowBytes()) {}

    CPixelsInMemory rows;
};

WrittenStream behindHeader(const Bytes& stream) {
    return {stream.data() + sizeof(TKHeader), stream.size() - sizeof(TKHeader)};
}

TEST(Comparison, TellsTheImageFromEveryOther) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 12}, {2, 16}}) {
        RawImage image = makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 64, 48);
        const Bytes stream = test::compressObject(image).bytes;
        const Job job(image);
        EXPECT_TRUE(restoresExactly(job, behindHeader(stream)));
        EXPECT_FALSE(restoresExactly(job, behindHeader(test::prefixOf(stream, stream.size() / 2))))
            << "a cut stream";
        for (const std::size_t place : {std::size_t{0}, image.bytes.size() - 1}) {
            image.bytes[place] ^= 1;
            EXPECT_FALSE(restoresExactly(job, behindHeader(stream))) << place;
            image.bytes[place] ^= 1;
        }
    }
}

TEST(Comparison, ATwelveBitStreamHasToComeBackInBothProfiles) {
    RawImage image = makeImage(Content::noise, 2, 16, 32, 32);
    image.bitsPerPixel = 12;
    const Bytes stream = test::compressObject(image).bytes;
    ASSERT_EQ(test::decompressObject(stream).bytes, image.bytes) << "in memory it does";
    EXPECT_FALSE(restoresExactly(Job(image), behindHeader(stream)));
}

TEST(Comparison, ACutStreamOfTheImageIsNotEnough) {
    const RawImage zeros{1, 8, 64, 64, Bytes(4096, 0)};
    const Bytes stream = test::compressObject(zeros).bytes;
    EXPECT_TRUE(restoresExactly(Job(zeros), behindHeader(stream)));
    const Bytes part = test::prefixOf(stream, 17);
    EXPECT_TRUE(decodeAndCompare(Job(zeros), MostBitsOfShort::inFiles, behindHeader(part)).isSame);
    EXPECT_FALSE(restoresExactly(Job(zeros), behindHeader(part)));
}

TEST(CExactEncoder, RaisedBitsAreThoseOfTheSamplesAndMoreThanDeclared) {
    RawImage image{2, 9, 4, 4, Bytes(32)};
    EXPECT_EQ(raisedBits(Job(image)), 10);
    image.bytes[31] = 0x20;
    EXPECT_EQ(raisedBits(Job(image)), 14);
    image.bitsPerPixel = 15;
    EXPECT_EQ(raisedBits(Job(image)), 16);
}

TEST(CExactEncoder, AStoppedRescueHasNoResult) {
    const RawImage image = makeImage(Content::flat, 2, 16, 5, 5);
    for (const bool isStopped : {false, true}) {
        const std::atomic<bool> flag{isStopped};
        const CStopRequest stop(flag);
        Job job(image, stop);
        CExactEncoder<int> encoder(job, true);
        while (encoder.rowsTaken() < image.height)
            encoder.takeRow();
        encoder.finish();
        const std::optional<Loss> loss = encoder.makeRestorable();
        EXPECT_EQ(loss, isStopped ? std::nullopt : std::optional(Loss::none));
        if (!isStopped) {
            EXPECT_EQ(encoder.rescues() & kWholeWraps, kWholeWraps);
        }
    }
}

}  // namespace
