// The claim: a loss is told exactly when decoding does not give the image back. Every size up to
// 130 x 130 is tried in every way to compress without a rate; a line of totals is printed for each.

#include <cstdio>
#include <map>
#include <tuple>

#include "support/Ways.h"
#include "verdict/VerdictImages.h"

namespace {

using test::Picture;
using test::RawImage;
using test::VerdictImages;
using test::Way;

// Sanitizers are slow, and one full run of a check is enough: the build with g++ has it.
#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
constexpr int kSizeShare = 12;
#else
constexpr int kSizeShare = 1;
#endif

/// Images with a side of at most this are all tried, with every picture.
constexpr int kSmallSide = 6;
/// Of the others, every size has one picture in so many; sanitizers also leave sizes out.
constexpr int kPictureShare = 3;

bool isTried(Picture picture, int width, int height) {
    const int place = width + 7 * height;
    if (std::min(width, height) <= kSmallSide) return place % ((kSizeShare + 3) / 4) == 0;
    if (place % kSizeShare != 0) return false;
    return (place / kSizeShare + static_cast<int>(picture)) % kPictureShare == 0;
}

/// Wrong verdicts of each picture that are named; thousands would say no more.
constexpr std::size_t kMostExamples = 3;

struct Totals {
    std::size_t images = 0;
    std::size_t warnings = 0;
    std::size_t wrong = 0;
};

class VerdictOf : public testing::TestWithParam<Way> {
protected:
    void tryImage(Picture picture, const RawImage& image) {
        const test::Outcome outcome = test::compress(GetParam(), image);
        const bool saysLoss = outcome.saysLoss();
        const bool isLost = !test::comesBack(GetParam(), outcome.bytes, image);
        ASSERT_NE(outcome.result.loss, TESK_LOSS_UNCHECKED);
        ++typesMet[{picture, image.bytesPerPixel, image.bitsPerPixel}];
        Totals& sum = totals[picture];
        ++sum.images;
        sum.warnings += saysLoss ? 1 : 0;
        if (saysLoss == isLost) return;
        if (++sum.wrong <= kMostExamples)
            examples += std::string(nameOf(picture)) + ", " + nameOf(image) +
                        (isLost ? ": lost without a word\n" : ": said to be lost\n");
    }

    void tryAllSizes() {
        const VerdictImages images;
        for (int height = 1; height <= VerdictImages::kGreatestSide; ++height)
            for (int width = 1; width <= VerdictImages::kGreatestSide; ++width)
                for (const Picture picture : test::kAllPictures)
                    if (isTried(picture, width, height))
                        tryImage(picture, images.make(picture, width, height));
    }

    Totals sumAndPrint() const {
        Totals all;
        for (const auto& [picture, sum] : totals) {
            print(nameOf(picture), sum);
            all.images += sum.images;
            all.warnings += sum.warnings;
            all.wrong += sum.wrong;
        }
        print("all", all);
        return all;
    }

    std::map<Picture, Totals> totals;
    /// Images of each picture, bytes per pixel and bits per pixel.
    std::map<std::tuple<Picture, int, int>, std::size_t> typesMet;
    std::string examples;

private:
    static void print(const char* what, const Totals& sum) {
        std::printf("%-12s %-12s %7zu images, %6zu warnings, %zu wrong verdicts\n",
                    nameOf(GetParam()), what, sum.images, sum.warnings, sum.wrong);
    }
};

TEST_P(VerdictOf, ALossIsToldExactlyWhenTheImageDoesNotComeBack) {
    std::printf("1 in %d of the sizes, above sides of %d 1 in %d of the pictures\n", kSizeShare,
                kSmallSide, kPictureShare);
    tryAllSizes();
    const Totals all = sumAndPrint();
    EXPECT_EQ(all.wrong, 0U) << examples;
    EXPECT_GT(all.images, 30000U / kSizeShare);
    EXPECT_GE(typesMet.size(), std::size(test::kAllPictures) * VerdictImages::kTypes - 1);
    for (const auto& [type, images] : typesMet)
        EXPECT_GT(images, all.images / 100);
    for (const auto& [picture, sum] : totals) {
        SCOPED_TRACE(nameOf(picture));
        EXPECT_LT(sum.warnings, sum.images);
        if (picture != Picture::zero) {
            EXPECT_GT(sum.warnings, 0U);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(EveryWay, VerdictOf, testing::ValuesIn(test::kAllWays));

}  // namespace
