#include "container/Loss.h"

#include <gtest/gtest.h>

#include "coding/encode/EncodeRows.h"
#include "support/Ways.h"

namespace {

using qmx::describeLoss;
using qmx::Loss;
using qmx::LossReport;
using test::Bytes;
using test::Content;
using test::makeImage;
using test::RawImage;
using test::Way;

RawImage filled(int bytesPerPixel, int bitsPerPixel, int width, int height, unsigned char byte) {
    const auto bytes = static_cast<std::size_t>(width * height * bytesPerPixel);
    return {bytesPerPixel, bitsPerPixel, width, height, Bytes(bytes, byte)};
}

/// Returns: a 2 x 2 image of 16-bit zeros but for its first sample.
RawImage oneSample(unsigned sample, int bitsPerPixel) {
    RawImage image = filled(2, bitsPerPixel, 2, 2, 0);
    image.bytes[0] = static_cast<unsigned char>(sample);
    image.bytes[1] = static_cast<unsigned char>(sample >> 8);
    return image;
}

/// What was said about a stream, and what is so.
struct Judged {
    test::Outcome outcome;
    bool isLost;
};

Judged judge(Way way, const RawImage& image, const test::Wish& wish = {}) {
    const test::Outcome outcome = compress(way, image, wish);
    return {outcome, !comesBack(way, outcome.bytes, image)};
}

/// Compresses without a rate. Returns: the loss, which is one exactly if the image is lost.
LossReport lossBy(Way way, const RawImage& image, int extra) {
    const Judged judged = judge(way, image, {0.0, extra});
    EXPECT_EQ(judged.outcome.saysLoss(), judged.isLost) << nameOf(image);
    return judged.outcome.report;
}

LossReport lossOf(const RawImage& image, int extra = 0) {
    return lossBy(Way::fileLower, image, extra);
}

LossReport lossAtDefaultBudget(const RawImage& image, int extra = 0) {
    return lossBy(Way::fileUpper, image, extra);
}

/// An 8-bit gray image whose stream can be cut anywhere. Requires: the image outlives it.
class CodedImage {
public:
    explicit CodedImage(const RawImage& image)
        : pixels(image.bytes.data(), headerOf(image).rawRowBytes()),
          job{headerOf(image), pixels},
          stream(test::encode(image)) {
        qmx::CCodedSections<short> sections(shapeOf(job.header), job.memory);
        qmx::CPixelSource<short> source(pixels, 1);
        encodeRows(source, sections);
        facts = sections.facts();
    }

    std::uint64_t streamBits() const { return facts.streamBits; }
    LossReport lossWhenCutTo(std::uint64_t streamBytes) const {
        qmx::StreamFate fate;
        fate.stream = {stream.data() + sizeof job.header, streamBytes};
        return findLoss(job, qmx::MostBitsOfShort::inFiles, facts, fate);
    }

private:
    qmx::CPixelsInMemory pixels;
    qmx::ImageJob job;
    qmx::CodedFacts facts;
    Bytes stream;
};

constexpr std::uint64_t kEndMarkBits = 2;
constexpr std::uint64_t kTailBits = kEndMarkBits + 9;

/// Returns: a photograph of a size at which a stream can end behind its last section and before all
/// of its end mark is there.
RawImage photoWithASeparateTail() {
    for (int width = 16; width < 64; ++width) {
        RawImage image = makeImage(Content::photo, 1, 8, width, 16);
        const std::uint64_t sectionBits = CodedImage(image).streamBits() - kTailBits;
        if (sectionBits % 8 > 8 - kEndMarkBits || sectionBits % 8 == 0) return image;
    }
    ADD_FAILURE() << "no such size";
    return {};
}

TEST(Loss, ASideOfOneLosesAllButZeros) {
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 50}, {50, 1}}) {
        EXPECT_EQ(lossOf(filled(1, 8, width, height, 1)).loss, Loss::sideOfOne);
        EXPECT_EQ(lossAtDefaultBudget(filled(3, 8, width, height, 1)).loss, Loss::sideOfOne);
        EXPECT_EQ(lossOf(filled(1, 8, width, height, 0)).loss, Loss::none);
        EXPECT_EQ(lossAtDefaultBudget(filled(2, 16, width, height, 0)).loss, Loss::none);
    }
}

TEST(Loss, ThinImagesLoseAllButZeros) {
    for (const auto& [width, height] : {std::pair{2, 4}, {4, 2}, {3, 4}, {3, 100}, {100, 3}}) {
        EXPECT_EQ(lossOf(makeImage(Content::noise, 1, 8, width, height)).loss, Loss::thinImage);
        EXPECT_EQ(lossOf(makeImage(Content::noise, 2, 16, width, height)).loss, Loss::thinImage);
        EXPECT_EQ(lossOf(filled(1, 8, width, height, 0)).loss, Loss::none);
    }
    for (const auto& [width, height] : {std::pair{2, 2}, {2, 3}, {3, 2}, {3, 3}})
        EXPECT_EQ(lossOf(makeImage(Content::noise, 3, 8, width, height)).loss, Loss::none);
}

TEST(Loss, OverlongSectionsAreCounted) {
    const LossReport flat = lossOf(filled(1, 8, 5, 5, 200));
    EXPECT_EQ(flat.loss, Loss::overlongSection);
    EXPECT_EQ(flat.count, 1U);
    EXPECT_EQ(lossOf(filled(1, 8, 4, 4, 200)).loss, Loss::none);
}

TEST(Loss, CoefficientsOfTheSmallestImageWrapFrom16384On) {
    const LossReport wrapped = lossOf(oneSample(16384, 9));
    EXPECT_EQ(wrapped.loss, Loss::wrappedCoefficient);
    EXPECT_EQ(wrapped.count, 1U);
    EXPECT_EQ(lossOf(oneSample(16383, 9)).loss, Loss::none);
    EXPECT_EQ(lossOf(oneSample(16384, 13)).loss, Loss::none) << "32-bit coefficients";
    EXPECT_EQ(lossOf(oneSample(65535, 12)).loss, Loss::none) << "-1 in 16 bits";
}

TEST(Loss, NoiseFarAboveTheDeclaredBitsWraps) {
    RawImage image = makeImage(Content::noise, 2, 16, 32, 32);
    EXPECT_EQ(lossOf(image).loss, Loss::none);
    image.bitsPerPixel = 9;
    EXPECT_EQ(lossOf(image).loss, Loss::wrappedCoefficient);
}

TEST(Loss, SamplesALittleAboveTheDeclaredBitsComeBack) {
    RawImage image = makeImage(Content::photo, 2, 11, 32, 32);
    image.bitsPerPixel = 9;
    EXPECT_EQ(lossOf(image).loss, Loss::none);
    EXPECT_EQ(lossAtDefaultBudget(image).loss, Loss::none);
}

TEST(Loss, SuspensionLosesColoursOnly) {
    const RawImage colours = makeImage(Content::photo, 3, 8, 32, 32);
    EXPECT_EQ(lossOf(colours, -5).loss, Loss::suspension);
    EXPECT_EQ(lossAtDefaultBudget(colours, -5).loss, Loss::suspension);
    EXPECT_EQ(lossOf(colours, -32).loss, Loss::none) << "there is no row behind which to pause";
    EXPECT_EQ(lossOf(makeImage(Content::photo, 1, 8, 32, 32), -5).loss, Loss::none);
    EXPECT_EQ(lossOf(filled(3, 8, 32, 32, 90), -5).loss, Loss::none) << "gray in three planes";
}

TEST(Loss, TheDefaultBudgetCutsNoiseOfTwoByTwo) {
    const LossReport report = lossAtDefaultBudget(makeImage(Content::noise, 1, 8, 2, 2));
    EXPECT_EQ(report.loss, Loss::cut);
    EXPECT_EQ(report.streamBytes, 16U);
    EXPECT_GT(report.completeBytes, 16U);
    EXPECT_EQ(lossAtDefaultBudget(filled(1, 8, 2, 2, 0)).loss, Loss::none);
}

TEST(Loss, WhatIsCutMayNotMatter) {
    const RawImage black = filled(1, 8, 64, 64, 0);
    const CodedImage zeros(black);
    EXPECT_EQ(zeros.lossWhenCutTo(1).loss, Loss::none);

    const RawImage photo = photoWithASeparateTail();
    const CodedImage withoutMark(photo);
    const std::uint64_t bytes = (withoutMark.streamBits() - kTailBits + 7) / 8;
    EXPECT_EQ(withoutMark.lossWhenCutTo(bytes).loss, Loss::none);
    const LossReport shorter = withoutMark.lossWhenCutTo(bytes - 8);
    EXPECT_EQ(shorter.loss, Loss::cut);
    EXPECT_EQ(shorter.streamBytes, 16 + bytes - 8);
}

TEST(Loss, WithoutItsEndMarkAStreamLosesSamplesAboveTheDeclaredBits) {
    RawImage photo = photoWithASeparateTail();
    photo.bitsPerPixel = 7;
    CodedImage withoutMark(photo);
    const std::uint64_t bytes = (withoutMark.streamBits() - kTailBits + 7) / 8;
    EXPECT_EQ(withoutMark.lossWhenCutTo(bytes).loss, Loss::cut);
    EXPECT_EQ(lossOf(photo).loss, Loss::none);
}

TEST(Loss, ImagesWithoutPixelsComeBackInEveryWay) {
    for (const Way way : test::kAllWays)
        for (const auto& [width, height] : {std::pair{0, 0}, {0, 5}, {5, 0}}) {
            const Judged judged = judge(way, filled(1, 8, width, height, 0));
            EXPECT_FALSE(judged.outcome.saysLoss()) << nameOf(way);
            EXPECT_FALSE(judged.isLost) << nameOf(way);
        }
}

TEST(Loss, NothingIsSaidOfStreamsThatARateCuts) {
    const Judged judged = judge(Way::fileUpper, filled(1, 8, 32, 32, 90), {0.1, 0});
    EXPECT_TRUE(judged.isLost);
    EXPECT_EQ(judged.outcome.report.loss, Loss::none);
}

TEST(Loss, InMemoryABudgetAsksForItsCut) {
    const Judged judged =
        judge(Way::object, makeImage(Content::photo, 1, 8, 60, 50), {.budgetBytes = 500});
    EXPECT_TRUE(judged.isLost);
    EXPECT_EQ(judged.outcome.report.loss, Loss::none);
    EXPECT_EQ(judged.outcome.report.reading, qmx::Reading::part);
}

TEST(Loss, InMemoryTheEstimateMayCutTheStream) {  // Quirk 16
    const Judged judged = judge(Way::object, makeImage(Content::noise, 1, 8, 2, 2));
    EXPECT_TRUE(judged.isLost);
    EXPECT_EQ(judged.outcome.report.loss, Loss::cut);
}

TEST(Loss, TheLowerWayAsksForNoRateEvenIfItIsGivenOne) {
    const Judged judged = judge(Way::fileLower, makeImage(Content::noise, 1, 8, 3, 20), {0.1, 0});
    EXPECT_TRUE(judged.isLost);
    EXPECT_EQ(judged.outcome.report.loss, Loss::thinImage);
}

TEST(Loss, InMemoryAHeaderAloneRestoresNoImage) {
    const Judged zeros = judge(Way::object, filled(1, 8, 8, 8, 0));
    EXPECT_EQ(zeros.outcome.bytes.size(), 16U);
    EXPECT_TRUE(zeros.isLost);
    EXPECT_EQ(zeros.outcome.report.loss, Loss::cut);
    EXPECT_FALSE(judge(Way::object, filled(1, 8, 16, 8, 0)).isLost);
}

TEST(Loss, ReasonsGiveTheirNumbers) {
    const std::pair<LossReport, const char*> reasons[] = {
        {{Loss::none, 0, 0, 0}, "it does restore it"},
        {{Loss::sideOfOne, 0, 0, 0}, "an image with a side of 1 pixel has no coefficients"},
        {{Loss::thinImage, 0, 0, 0},
         "decoders filter the longer side of an image with a side of 2 or 3 pixels"},
        {{Loss::wrappedCoefficient, 1, 0, 0},
         "1 coefficient does not fit 16 bits: samples exceed the bits/pixel"},
        {{Loss::wrappedCoefficient, 25, 0, 0},
         "25 coefficients do not fit 16 bits: samples exceed the bits/pixel"},
        {{Loss::endlessRun, 1, 0, 0},
         "1 section covers more coefficients than a run can pass over"},
        {{Loss::endlessRun, 2, 0, 0},
         "2 sections cover more coefficients than a run can pass over"},
        {{Loss::overlongSection, 1, 0, 0}, "1 section is longer than its length field can say"},
        {{Loss::overlongSection, 3, 0, 0},
         "3 sections are longer than their length fields can say"},
        {{Loss::suspension, 0, 0, 0},
         "coding was suspended, and later colour planes lack their first rows"},
        {{Loss::cut, 0, 53, 60}, "no rate was given, but the stream was cut at 53 of 60 bytes"}};
    for (const auto& [report, text] : reasons) {
        const bool isHopeless = report.loss == Loss::none || report.loss == Loss::sideOfOne;
        const char* hint = "; the exact encode of the library (libtesk) restores the image";
        EXPECT_EQ(describeLoss(report), std::string(text) + (isHopeless ? "" : hint));
    }
}

}  // namespace
