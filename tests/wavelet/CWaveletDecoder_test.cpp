#include "coding/decode/CWaveletDecoder.h"

#include <gtest/gtest.h>
#include <string>

#include "coding/encode/CWaveletEncoder.h"
#include "support/Planes.h"
#include "wavelet/CFilter5_3.h"

namespace {

using qmx::CImageData;
using test::samplesOf;

template <class T>
class Inverse : public testing::Test {
protected:
    static constexpr unsigned kGreatest = sizeof(T) == 2 ? 4095 : 65535;

    /// Returns: whether the inverse transform restores a transformed random image.
    static testing::AssertionResult restores(int width, int height, int planes = 1) {
        CImageData<T> image(width, height, planes);
        qmx::CFilter5_3<T> filter;
        test::fillRandom(image, kGreatest, static_cast<std::uint64_t>(width * 131 + height));
        const auto before = samplesOf(image);
        qmx::CWaveletEncoder<T>(&image, &filter, false).transform();
        qmx::CWaveletDecoder<T>(&image, &filter, false).untransform();
        if (samplesOf(image) == before) return testing::AssertionSuccess();
        return testing::AssertionFailure() << width << " x " << height << " differs";
    }
};

using Types = testing::Types<short, int>;
TYPED_TEST_SUITE(Inverse, Types);

TYPED_TEST(Inverse, RestoresAllSmallImages) {
    for (int width = 1; width <= 70; ++width)
        for (int height = 1; height <= 70; ++height) {
            const int shorter = std::min(width, height);
            const int longer = std::max(width, height);
            const bool thin = shorter < 4 && longer >= 4;
            if (!thin) {
                ASSERT_TRUE(this->restores(width, height));
            }
        }
}

TYPED_TEST(Inverse, FiltersThinImagesThoughTheyWereNotTransformed) {  // Quirk 4
    for (int shorter = 1; shorter <= 3; ++shorter)
        for (int longer = 4; longer <= 70; ++longer) {
            ASSERT_FALSE(this->restores(shorter, longer));
            ASSERT_FALSE(this->restores(longer, shorter));
        }
}

TYPED_TEST(Inverse, RestoresTallWideImagesWithSkippedColumns) {
    for (const auto& [width, height] :
         {std::pair{1023, 1025}, {1024, 1026}, {1025, 1025}, {1027, 1040}, {2047, 1031}})
        EXPECT_TRUE(this->restores(width, height));
    EXPECT_TRUE(this->restores(1001, 2101));
    EXPECT_TRUE(this->restores(2051, 1100));
}

TYPED_TEST(Inverse, RestoresAllPlanes) {
    EXPECT_TRUE(this->restores(33, 47, 3));
}

TYPED_TEST(Inverse, KillBeforeLeavesThePlanesUntouched) {
    CImageData<TypeParam> image(64, 64, 1);
    qmx::CFilter5_3<TypeParam> filter;
    test::fillRandom(image, 255, 5);
    const auto before = samplesOf(image);
    qmx::CWaveletDecoder<TypeParam> decoder(&image, &filter, false);
    decoder.kill();
    decoder.untransform();
    EXPECT_EQ(samplesOf(image), before);
}

/// Records at which steps it is called.
class StepFilter final : public qmx::CFilter<short> {
public:
    int transform(short*, int, unsigned long) override { return 0; }
    int transformMul(short*, int, unsigned long, int, unsigned long) override { return 0; }
    void untransform(short*, int, unsigned long step) override { note('r', step); }
    void untransformMul(short*, int, unsigned long, int, unsigned long step) override {
        note('c', step);
    }
    std::string calls;

private:
    void note(char direction, unsigned long step) {
        const std::string call = direction + std::to_string(step) + ' ';
        if (!calls.ends_with(call)) calls += call;
    }
};

TEST(CWaveletDecoder, GoesFromTheCoarsestStepDownColumnsFirst) {
    CImageData<short> image(64, 64, 1);
    image.clear();
    StepFilter filter;
    qmx::CWaveletDecoder<short>(&image, &filter, false).untransform();
    EXPECT_EQ(filter.calls, "c16 r16 c8 r8 c4 r4 c2 r2 c1 r1 ");
}

TEST(CWaveletDecoder, AThinImageIsInverseFilteredOnceAtStepOne) {
    CImageData<short> image(3, 100, 1);
    image.clear();
    image.row(0, 0)[0] = 40;
    image.row(0, 1)[0] = 6;
    qmx::CFilter5_3<short> filter;
    qmx::CWaveletDecoder<short>(&image, &filter, false).untransform();
    EXPECT_EQ(image.row(0, 0)[0], 40 - 3);
    EXPECT_EQ(image.row(0, 0)[1], 0);
}

}  // namespace
