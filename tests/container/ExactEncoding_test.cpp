#include "container/ExactEncoding.h"

#include <gtest/gtest.h>

#include "container/ExactCheck.h"
#include "support/CodecObjects.h"
#include "support/DriverAgreement.h"

namespace {

using namespace qmx;
using test::Bytes;
using test::Content;
using test::makeImage;
using test::RawImage;

ExactJob jobOf(const RawImage& image) {
    ExactJob job{test::headerOf(image), image.bytes.data(), 0, std::pmr::new_delete_resource()};
    job.strideBytes = static_cast<std::size_t>(job.header.rawRowBytes());
    return job;
}

TEST(ExactCheck, TellsTheImageFromEveryOther) {
    for (const test::SampleKind kind : {test::SampleKind{1, 8}, {3, 8}, {2, 12}, {2, 16}}) {
        RawImage image = makeImage(Content::photo, kind.bytesPerPixel, kind.bitsPerPixel, 64, 48);
        const Bytes stream = test::compressObject(image).stream;
        const unsigned char* coded = stream.data() + sizeof(TKHeader);
        const std::size_t codedBytes = stream.size() - sizeof(TKHeader);
        const ExactJob job = jobOf(image);
        EXPECT_TRUE(restoresExactly(job, coded, codedBytes));
        EXPECT_FALSE(restoresExactly(job, coded, codedBytes / 2)) << "a cut stream";
        for (const std::size_t place : {std::size_t{0}, image.bytes.size() - 1}) {
            image.bytes[place] ^= 1;
            EXPECT_FALSE(restoresExactly(job, coded, codedBytes)) << place;
            image.bytes[place] ^= 1;
        }
    }
}

TEST(ExactCheck, ATwelveBitStreamHasToComeBackInBothProfiles) {
    RawImage image = makeImage(Content::noise, 2, 16, 32, 32);
    image.bitsPerPixel = 12;
    const Bytes stream = test::compressObject(image).stream;
    ASSERT_EQ(test::decompressObject(stream).bytes, image.bytes) << "in memory it does";
    EXPECT_FALSE(restoresExactly(jobOf(image), stream.data() + sizeof(TKHeader),
                                 stream.size() - sizeof(TKHeader)));
}

TEST(ExactEncoding, RaisedBitsAreThoseOfTheSamplesAndMoreThanDeclared) {
    RawImage image{2, 9, 4, 4, Bytes(32)};
    EXPECT_EQ(raisedBits(jobOf(image)), 10);
    image.bytes[31] = 0x20;
    EXPECT_EQ(raisedBits(jobOf(image)), 14);
    image.bitsPerPixel = 15;
    EXPECT_EQ(raisedBits(jobOf(image)), 16);
}

TEST(ExactEncoding, AStoppedJobWritesNothing) {
    const RawImage image = makeImage(Content::photo, 2, 16, 40, 30);
    const std::atomic<bool> stop{true};
    ExactJob job = jobOf(image);
    job.stop = &stop;
    bool isWritten = false;
    EXPECT_EQ(encodeExactly(job, [&](auto&) { isWritten = true; }), ExactOutcome::stopped);
    EXPECT_FALSE(isWritten);
}

}  // namespace
