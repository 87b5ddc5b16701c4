// The claim: no proper prefix of an exact stream passes for the whole, unless its pixels are the image's.

#include "exact/ExactImages.h"
#include "support/CodecCalls.h"
#include "support/CodecObjects.h"
#include "support/EveryDecoder.h"

namespace {

using test::Bytes;
using test::Call;
using test::RawImage;

/// Bytes that a stream may lack behind a complete end mark, which has 9 zero bits behind it.
constexpr std::size_t kMostPaddingBytes = 2;

RawImage flatColour(int bits, int width, int height, test::Random& random) {
    RawImage image{3, bits, width, height, {}};
    unsigned char colour[3];
    for (unsigned char& sample : colour)
        sample = static_cast<unsigned char>(random.below(std::uint64_t{1} << bits));
    for (int i = 0; i < width * height; ++i)
        image.bytes.insert(image.bytes.end(), std::begin(colour), std::end(colour));
    return image;
}

class Ends : public testing::Test {
protected:
    ~Ends() override {
        std::printf("%zu prefixes, %zu pass for the whole; %zu images, %zu plain streams refused\n",
                    prefixes, passed, images, falseEnds);
    }

    void tryImage(const RawImage& image) {
        ++images;
        const Call exact = test::compressCall(codec.get(), image);
        ASSERT_EQ(exact.status, TESK_OK);
        for (std::size_t size = 16; size < exact.bytes.size(); ++size) {
            ++prefixes;
            const Bytes prefix = test::prefixOf(exact.bytes, size);
            const Call back = test::decompressCall(codec.get(), prefix);
            if (back.status != TESK_OK) continue;
            ++passed;
            EXPECT_EQ(back.bytes, image.bytes) << test::describe(image) << ", " << size;
            EXPECT_GE(size + kMostPaddingBytes, exact.bytes.size());
        }
        if (exact.result.rescue != 0) expectPlainIsSaidToLose(image);
    }

    /// Of streams that were replaced, those that decode to the image have a false end.
    void expectPlainIsSaidToLose(const RawImage& image) {
        const Call plain = test::compressCall(plainCodec.get(), image);
        EXPECT_NE(plain.result.loss, TESK_LOSS_NONE);
        const Call back = test::decompressCall(codec.get(), plain.bytes);
        if (back.status != TESK_OK || back.bytes != image.bytes) return;
        ++falseEnds;
        const Bytes prefix =
            test::prefixOf(plain.bytes, plain.bytes.size() - kMostPaddingBytes - 1);
        EXPECT_EQ(test::decompressCall(codec.get(), prefix).status, TESK_OK);
    }

    /// One in so many sizes, with so many colours each.
    void tryFlatColours(int share, int colours) {
        constexpr int kGreatestSide = 24;
        for (int bits = 1; bits <= 8; ++bits)
            for (int height = 2; height <= kGreatestSide; ++height)
                for (int width = 2; width <= kGreatestSide; ++width)
                    for (int i = 0; i < colours; ++i)
                        if ((width + 5 * height + bits) % share == 0)
                            tryImage(flatColour(bits, width, height, random));
    }

    test::Codec codec = test::makeCodec();
    test::Codec plainCodec = test::makeCodecWithFlags(TESK_PLAIN);
    test::Random random{11};
    std::size_t images = 0;
    std::size_t prefixes = 0;
    std::size_t passed = 0;
    std::size_t falseEnds = 0;
};

TEST_F(Ends, OfFlatColoursAreWhereTheyStand) {
    tryFlatColours(test::kRunsInFull ? 41 : 101, 1);
    EXPECT_GT(passed, images / 2);
}

TEST_F(Ends, OfAnImageWithAFalseEndAreWhereTheyStand) {
    for (int i = 0; i < 32; ++i)
        tryImage(flatColour(1, 5, 21, random));
    EXPECT_GT(falseEnds, 0U);
}

// Takes minutes: run with --gtest_also_run_disabled_tests.
TEST_F(Ends, DISABLED_OfFlatColoursAreWhereTheyStandWithoutException) {
    tryFlatColours(1, 3);
    EXPECT_GT(prefixes, 1000000U);
    EXPECT_GT(falseEnds, 0U);
}

}  // namespace
