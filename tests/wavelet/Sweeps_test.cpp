// The transforms row by row, against the plain reference, which goes level by level and sample by sample.

#include <array>

#include "reference/ReferenceWavelet.h"
#include "support/ApartRow.h"
#include "support/CpuLevels.h"
#include "support/KernelData.h"
#include "support/RingLines.h"
#include "wavelet/CRowRestorer.h"

namespace {

using qmx::CImageData;
using qmx::ImageShape;

/// The samples, or coefficients, of each plane.
template <class T>
using Planes = std::array<std::vector<T>, CImageData<T>::kMaxPlanes>;

template <class T>
Planes<T> anyPlanes(const ImageShape& shape) {
    // Every third image has the least and the greatest values only, whose sums wrap.
    const auto seed = static_cast<std::uint64_t>(shape.width * 1000 + shape.height);
    const test::Data data = seed % 3 == 0 ? test::Data::extreme : test::Data::random;
    Planes<T> planes;
    for (int p = 0; p < shape.planes; ++p)
        planes[static_cast<std::size_t>(p)] = test::kernelData<T>(
            data, shape.samplesPerPlane(), 10 * seed + static_cast<unsigned>(p));
    return planes;
}

using Transform = void(reference::Plane&, std::int64_t);

template <class T>
Planes<T> byReference(const ImageShape& shape, const Planes<T>& samples, Transform transform) {
    Planes<T> result;
    for (std::size_t p = 0; p < static_cast<std::size_t>(shape.planes); ++p) {
        reference::Plane plane(shape.width, shape.height);
        std::copy(samples[p].begin(), samples[p].end(), plane.values.begin());
        transform(plane, 8 * sizeof(T));
        for (const std::int64_t value : plane.values)
            result[p].push_back(static_cast<T>(value));
    }
    return result;
}

template <class T>
Planes<T> swept(const ImageShape& shape, const Planes<T>& samples) {
    CImageData<T> image(shape.width, shape.height, shape.planes);
    Planes<T> result;
    for (int p = 0; p < shape.planes; ++p) {
        const std::vector<T>& plane = samples[static_cast<std::size_t>(p)];
        for (int r = 0; r < shape.height; ++r)
            std::copy_n(plane.begin() + r * shape.width, shape.width, image.row(p, r));
        result[static_cast<std::size_t>(p)] = test::coefficientsOf(image, p);
    }
    return result;
}

/// Expects that all rows of coefficients are asked for once, in their order.
template <class T>
Planes<T> restored(const ImageShape& shape, const Planes<T>& coefficients) {
    qmx::CRowRestorer<T> restorer(shape, std::pmr::new_delete_resource());
    const int levels = qmx::levelsToRestore(qmx::levelCount(shape.width, shape.height), 0);
    int asked = 0;
    const auto fill = [&](int p, int row, T* samples) {
        EXPECT_EQ(row * shape.planes + p, asked++);
        const auto first = coefficients[static_cast<std::size_t>(p)].begin() + row * shape.width;
        const std::vector<T> apart =
            test::apartRow(std::vector<T>(first, first + shape.width), row, levels);
        std::copy(apart.begin(), apart.end(), samples);
        return true;
    };
    Planes<T> result;
    for (int r = 0; r < shape.height; ++r) {
        EXPECT_TRUE(restorer.restore(r, fill));
        for (int p = 0; p < shape.planes; ++p) {
            const T* row = restorer.rows().row(p, 0);
            auto& plane = result[static_cast<std::size_t>(p)];
            plane.insert(plane.end(), row, row + shape.width);
        }
    }
    EXPECT_EQ(asked, shape.height * shape.planes);
    return result;
}

class Sweeps : public test::AtCpuLevel {
protected:
    /// Expects what the reference gives, both ways.
    static void expectReference(const ImageShape& shape) {
        SCOPED_TRACE(testing::Message() << shape.width << " x " << shape.height);
        expectReferenceOf<short>(shape);
        expectReferenceOf<int>(shape);
    }

private:
    template <class T>
    static void expectReferenceOf(const ImageShape& shape) {
        const Planes<T> planes = anyPlanes<T>(shape);
        ASSERT_TRUE(restored(shape, planes) ==
                    byReference(shape, planes, reference::inverseTransform));
        const Planes<T> coefficients = swept(shape, planes);
        if (qmx::levelCount(shape.width, shape.height) >= 1) {
            ASSERT_TRUE(coefficients == byReference(shape, planes, reference::forwardTransform));
        } else {
            // The reference never filters an image without levels; its inverse does, once.
            ASSERT_TRUE(byReference(shape, coefficients, reference::inverseTransform) == planes);
        }
    }
};

TEST_P(Sweeps, AreTheReferenceForSmallImages) {
    for (int width = 0; width <= 41; ++width)
        for (int height = 0; height <= 41; ++height) {
            expectReference({width, height, 1});
            if (HasFatalFailure()) return;
        }
}

TEST_P(Sweeps, FilterThinImagesOnce) {  // Quirk 4
    for (int shorter = 0; shorter <= 3; ++shorter) {
        expectReference({shorter, 700, 1});
        expectReference({700, shorter, 1});
    }
}

TEST_P(Sweeps, AreTheReferenceForImagesOfManyLevels) {
    for (const auto& [width, height] :
         {std::pair{64, 64}, {65, 127}, {128, 191}, {333, 97}, {97, 333}, {1001, 70}})
        expectReference({width, height, 1});
    test::Random random(3);
    for (int i = 0; i < 40; ++i)
        expectReference(
            {4 + static_cast<int>(random.below(300)), 4 + static_cast<int>(random.below(300)), 1});
}

TEST_P(Sweeps, AreTheReferenceForAllPlanes) {
    expectReference({70, 190, 3});
    expectReference({3, 190, 3});
}

/// Steps of 2 to 16, and images that are just not wide or not tall.
TEST_P(Sweeps, AreTheReferenceWhereALastColumnIsLeftOut) {  // Quirk 9
    for (const auto& [width, height] : {std::pair{257, 1025},
                                        {261, 2050},
                                        {133, 2049},
                                        {70, 4100},
                                        {65, 8200},
                                        {255, 1025},
                                        {257, 1024}})
        expectReference({width, height, 1});
}

INSTANTIATE_TEST_SUITE_P(Levels, Sweeps, test::allCpuLevels(), test::cpuLevelName());

TEST(CForwardSweep, EndsTheRowsOfEachLevelOnceAndInTheirOrder) {
    CImageData<short> image(40, 203, 1);
    std::fill_n(image.row(0, 0), image.stride * image.y, short{0});
    std::vector<int> rowsDone(4);
    test::sweepForward(image, 0, [&](int level, int r, const short*, std::size_t) {
        EXPECT_EQ(r, rowsDone.at(static_cast<std::size_t>(level))++);
    });
    EXPECT_EQ(rowsDone, (std::vector<int>{203, 102, 51, 26}));
}

TEST(CRowRestorer, TakesNoMoreRowsAheadThanItsLevelsNeed) {
    for (const auto& [side, rowsAhead] :
         {std::pair{2, 3}, {4, 3}, {8, 8}, {16, 18}, {32, 38}, {64, 78}}) {
        qmx::CRowRestorer<short> restorer({side, 500, 1}, std::pmr::new_delete_resource());
        for (const int r : {0, 1}) {
            int last = -1;
            restorer.restore(r, [&](int, int row, short*) {
                last = row;
                return true;
            });
            EXPECT_EQ(last, r + rowsAhead) << side;
        }
    }
}

TEST(CRowRestorer, TakesFewerRowsAheadForAReducedPicture) {
    for (const auto& [reduction, rowsAhead] :
         {std::pair{0, 78}, {1, 38}, {2, 18}, {3, 8}, {4, 3}, {5, 0}}) {
        qmx::CRowRestorer<short> restorer({64, 5000, 1}, std::pmr::new_delete_resource(),
                                          reduction);
        EXPECT_EQ(restorer.rows().x, 64 >> reduction);
        int last = -1;
        restorer.restore(0, [&](int, int row, short*) {
            last = row;
            return true;
        });
        EXPECT_EQ(last, rowsAhead) << reduction;
    }
}

TEST(CRowRestorer, EndsWhenThereAreNoMoreCoefficients) {
    qmx::CRowRestorer<int> restorer({8, 8, 3}, std::pmr::new_delete_resource());
    int rowsLeft = 5;
    EXPECT_FALSE(restorer.restore(0, [&](int, int, int*) { return --rowsLeft > 0; }));
    EXPECT_EQ(rowsLeft, 0);
}

}  // namespace
