// The claim: every image whose sides are 2 or more comes back from its exact stream, in every decoder.

#include <span>

#include "container/CPixelSink.h"
#include "container/ImageJob.h"
#include "exact/ExactRun.h"
#include "support/LibraryCodec.h"
#include "wavelet/CRowRestorer.h"

namespace {

using test::ExactKind;
using test::ExactRun;
using test::Look;
using test::RawImage;

/// Sanitizers are slow, and one larger run is enough: of the sizes, one in so many is tried.
constexpr int kSizeShare = test::kRunsInFull ? 7 : 67;

class EverySize : public testing::TestWithParam<Look> {
protected:
    static void expectAllBack(int share) {
        constexpr int kGreatestSide = 47;
        ExactRun run;
        for (int height = 2; height <= kGreatestSide; ++height)
            for (int width = 2; width <= kGreatestSide; ++width) {
                if ((width + 11 * height) % share != 0) continue;
                const auto seed = static_cast<std::uint64_t>(100 * height + width);
                for (const ExactKind& kind : test::kExactKinds)
                    run.add(test::makeExactImage(GetParam(), kind, width, height, seed));
            }
        EXPECT_EQ(run.restored, run.images);
        EXPECT_EQ(run.wrong, "");
    }
};

TEST_P(EverySize, OfSmallImagesComesBack) {
    expectAllBack(kSizeShare);
}

// All sizes take minutes: run with --gtest_also_run_disabled_tests.
TEST_P(EverySize, DISABLED_OfSmallImagesComesBackWithoutException) {
    expectAllBack(1);
}

INSTANTIATE_TEST_SUITE_P(Looks, EverySize, testing::ValuesIn(test::kAllLooks),
                         [](const auto& instance) {
                             std::string name = test::nameOf(instance.param);
                             std::erase(name, ' ');
                             return name;
                         });

TEST(Exact, RandomSizesComeBack) {
    constexpr int kImages = 5000 / kSizeShare;
    constexpr std::uint64_t kGreatestSide = 300;
    test::Random random(7);
    ExactRun run;
    for (int i = 0; i < kImages; ++i) {
        const auto width = static_cast<int>(2 + random.below(kGreatestSide - 1));
        const auto height = static_cast<int>(2 + random.below(kGreatestSide - 1));
        const ExactKind& kind = test::kExactKinds[random.below(std::size(test::kExactKinds))];
        const Look look = test::kAllLooks[random.below(std::size(test::kAllLooks))];
        run.add(test::makeExactImage(look, kind, width, height, random.next()));
    }
    EXPECT_EQ(run.restored, run.images);
    EXPECT_EQ(run.wrong, "");
}

TEST(Exact, ElongatedImagesComeBack) {
    constexpr int kSizes[][2] = {{5, 6553}, {6553, 5},  {4, 4096},
                                 {2, 9000}, {3, 65535}, {65535, 2}};
    constexpr std::size_t kTried = test::kRunsInFull ? std::size(kSizes) : 4;
    ExactRun run;
    for (const auto& [width, height] : std::span(kSizes).first(kTried))
        for (const ExactKind& kind : test::kExactKinds)
            for (const Look look : {Look::constant, Look::bright})
                run.add(test::makeExactImage(look, kind, width, height));
    EXPECT_EQ(run.restored, run.images);
    EXPECT_EQ(run.wrong, "");
}

/// Sides at which the length of the coarsest order is just too much for its field.
TEST(Exact, LargeSusceptibleSizesComeBack) {
    constexpr int kSizes[][2] = {{181, 181}, {500, 500}, {724, 724}, {1000, 1000}};
    ExactRun run;
    for (const auto& [width, height] : kSizes)
        for (const ExactKind& kind : {ExactKind{1, 8, 8}, {3, 8, 8}, {2, 12, 12}, {2, 16, 16}})
            for (const Look look : {Look::constant, Look::bright})
                run.add(test::makeExactImage(look, kind, width, height));
    EXPECT_EQ(run.restored, run.images);
    EXPECT_EQ(run.wrong, "");
    EXPECT_GT(run.images, run.byRescue[0] * 4 / 3);
}

TEST(Exact, DISABLED_TheLargestSusceptibleSizesComeBack) {
    constexpr int kSizes[][2] = {{1448, 1448}, {1449, 1447}, {3326, 2504}};
    ExactRun run;
    for (const auto& [width, height] : kSizes)
        for (const ExactKind& kind : test::kExactKinds)
            for (const Look look : test::kAllLooks)
                run.add(test::makeExactImage(look, kind, width, height));
    EXPECT_EQ(run.restored, run.images);
    EXPECT_EQ(run.wrong, "");
}

/// Sizes of 12 coefficients in the coarsest order whose sections hold 15 bits, for each level count.
constexpr int kTightSizes[][2] = {{9, 13}, {14, 9}, {17, 25}, {30, 17}, {33, 49}, {65, 97}};

/// Returns: an image that the transform takes to a few values, all details 0.
template <class T>
RawImage imageOfPatternIn(const ExactKind& kind, int width, int height, test::Random& random) {
    const unsigned greatest = (1U << kind.sampleBits) - 1;
    const unsigned choices[] = {0, 0, 1, 2, greatest / 2, greatest / 2 + 1, greatest - 1, greatest};
    RawImage image{kind.bytesPerPixel, kind.declaredBits, width, height, {}};
    const qmx::TKHeader header = test::headerOf(image);
    image.bytes.resize(header.rawBytes());
    const int step = 1 << qmx::levelCount(width, height);
    qmx::CRowRestorer<T> rows(qmx::shapeOf(header), std::pmr::new_delete_resource());
    qmx::CPixelSink<T> pixels(header, qmx::CSampleLimit<T>(0), image.bytes.data(),
                              header.rawRowBytes());
    for (int r = 0; r < height; ++r) {
        rows.restore(r, [&](int, int row, T* samples) {
            for (int c = 0; row % step == 0 && c < width; c += step)
                *samples++ = static_cast<T>(choices[random.below(std::size(choices))]);
            return true;
        });
        pixels.take(rows.rows(), 0, r);
    }
    return image;
}

RawImage imageOfPattern(const ExactKind& kind, int width, int height, test::Random& random) {
    return kind.bytesPerPixel == 2 ? imageOfPatternIn<int>(kind, width, height, random)
                                   : imageOfPatternIn<short>(kind, width, height, random);
}

void expectPatternsBack(int patterns) {
    test::Random random(3);
    ExactRun run;
    for (int i = 0; i < patterns; ++i)
        for (const auto& [width, height] : kTightSizes)
            run.add(imageOfPattern(test::kExactKinds[random.below(std::size(test::kExactKinds))],
                                   width, height, random));
    EXPECT_EQ(run.restored, run.images);
    EXPECT_EQ(run.wrong, "");
}

TEST(Exact, PatternsThatLeaveNoRoomComeBack) {
    expectPatternsBack(2000 / kSizeShare);
}

TEST(Exact, DISABLED_ManyPatternsThatLeaveNoRoomComeBack) {
    expectPatternsBack(20000);
}

}  // namespace
