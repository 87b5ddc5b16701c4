// The transforms in one sweep, against the plain reference, which goes level by level and sample by
// sample.

#include <limits>

#include "coding/decode/CWaveletDecoder.h"
#include "coding/encode/CWaveletEncoder.h"
#include "reference/ReferenceWavelet.h"
#include "support/CpuLevels.h"
#include "support/Planes.h"
#include "wavelet/CFilter5_3.h"

namespace {

using qmx::CImageData;

/// A filter that is not known by its type: it has the transforms go level by level.
template <class T>
class OtherFilter final : public qmx::CFilter<T> {
public:
    int transform(T* data, int length, unsigned long stride) override {
        return filter.transform(data, length, stride);
    }
    void untransform(T* data, int length, unsigned long stride) override {
        filter.untransform(data, length, stride);
    }
    int transformMul(T* data, int length, unsigned long stride, int count,
                     unsigned long step) override {
        return filter.transformMul(data, length, stride, count, step);
    }
    void untransformMul(T* data, int length, unsigned long stride, int count,
                        unsigned long step) override {
        filter.untransformMul(data, length, stride, count, step);
    }

private:
    qmx::CFilter5_3<T> filter;
};

enum class Direction { forward, inverse };

template <class T>
void run(CImageData<T>& image, qmx::CFilter<T>& filter, Direction direction) {
    if (direction == Direction::forward)
        qmx::CWaveletEncoder<T>(&image, &filter, false).transform();
    else
        qmx::CWaveletDecoder<T>(&image, &filter, false).untransform();
}

/// Fills all samples, padding included, with values of the whole range.
template <class T>
void fillAll(CImageData<T>& image, std::uint64_t seed) {
    test::Random random(seed);
    for (int p = 0; p < image.planes; ++p)
        for (int r = 0; r < image.y; ++r)
            for (int c = 0; c < image.stride; ++c)
                image.row(p, r)[c] = static_cast<T>(random.next());
}

/// Returns: the samples and the padding.
template <class T>
std::vector<T> everything(const CImageData<T>& image) {
    std::vector<T> all;
    for (int p = 0; p < image.planes; ++p)
        all.insert(all.end(), image.row(p, 0), image.row(p, 0) + image.stride * image.y);
    return all;
}

template <class T>
std::vector<T> byReference(const CImageData<T>& image, Direction direction) {
    std::vector<T> all;
    for (int p = 0; p < image.planes; ++p) {
        reference::Plane plane(image.x, image.y);
        for (int r = 0; r < image.y; ++r)
            for (int c = 0; c < image.x; ++c)
                plane.at(r, c) = image.row(p, r)[c];
        constexpr int kBits = 8 * sizeof(T);
        if (direction == Direction::forward) forwardTransform(plane, kBits);
        if (direction == Direction::inverse) inverseTransform(plane, kBits);
        for (const auto value : plane.values)
            all.push_back(static_cast<T>(value));
    }
    return all;
}

class Sweeps : public test::AtCpuLevel {
protected:
    template <class T>
    static void expectReference(int width, int height, int planes, Direction direction) {
        CImageData<T> image(width, height, planes);
        fillAll(image, static_cast<std::uint64_t>(width * 1000 + height));
        const auto expected = byReference(image, direction);
        qmx::CFilter5_3<T> filter;
        run<T>(image, filter, direction);
        ASSERT_EQ(test::samplesOf(image), expected) << width << " x " << height;
    }

    template <class T>
    static void expectSameAsLevelByLevel(int width, int height) {
        for (const Direction direction : {Direction::forward, Direction::inverse}) {
            CImageData<T> image(width, height, 1);
            CImageData<T> other(width, height, 1);
            fillAll(image, 7);
            fillAll(other, 7);
            qmx::CFilter5_3<T> filter;
            OtherFilter<T> otherFilter;
            run<T>(image, filter, direction);
            run<T>(other, otherFilter, direction);
            ASSERT_TRUE(everything(image) == everything(other)) << width << " x " << height;
        }
    }
};

TEST_P(Sweeps, AreTheReferenceForSmallImages) {
    for (const Direction direction : {Direction::forward, Direction::inverse})
        for (int width = 4; width <= 41; ++width)
            for (int height = 4; height <= 41; ++height) {
                expectReference<short>(width, height, 1, direction);
                expectReference<int>(width, height, 1, direction);
                if (HasFatalFailure()) return;
            }
}

TEST_P(Sweeps, AreTheReferenceForImagesOfManyLevels) {
    for (const Direction direction : {Direction::forward, Direction::inverse})
        for (const auto& [width, height] : {std::pair{64, 64},
                                            {65, 127},
                                            {128, 191},
                                            {333, 97},
                                            {97, 333},
                                            {1001, 70},
                                            {261, 1026}}) {
            expectReference<short>(width, height, 1, direction);
            expectReference<int>(width, height, 1, direction);
        }
}

TEST_P(Sweeps, AreTheReferenceForAllPlanes) {
    expectReference<short>(70, 90, 3, Direction::forward);
    expectReference<short>(70, 90, 3, Direction::inverse);
}

TEST_P(Sweeps, GiveWhatLevelByLevelGivesWhereALastColumnIsSkipped) {
    for (const auto& [width, height] : {std::pair{1023, 1025},
                                        {1024, 1026},
                                        {1025, 1025},
                                        {1027, 1040},
                                        {2051, 2100},
                                        {261, 4200}}) {
        expectSameAsLevelByLevel<short>(width, height);
        expectSameAsLevelByLevel<int>(width, height);
    }
}

TEST_P(Sweeps, GiveWhatLevelByLevelGivesForRandomSizes) {
    test::Random random(3);
    for (int i = 0; i < 150; ++i) {
        const int width = 1 + static_cast<int>(random.below(300));
        const int height = 1 + static_cast<int>(random.below(300));
        expectSameAsLevelByLevel<short>(width, height);
        expectSameAsLevelByLevel<int>(width, height);
    }
}

INSTANTIATE_TEST_SUITE_P(Levels, Sweeps, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
