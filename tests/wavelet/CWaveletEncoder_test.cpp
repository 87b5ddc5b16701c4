#include "coding/encode/CWaveletEncoder.h"

#include <gtest/gtest.h>

#include "support/Planes.h"
#include "wavelet/CFilter5_3.h"

namespace {

using qmx::CImageData;
using test::samplesOf;

template <class T>
struct Forward {
    Forward(int width, int height, int planes = 1)
        : image(width, height, planes), encoder(&image, &filter, false) {}
    CImageData<T> image;
    qmx::CFilter5_3<T> filter;
    qmx::CWaveletEncoder<T> encoder;
};

/// A filter that counts its destructions.
class CountedFilter final : public qmx::CFilter<short> {
public:
    explicit CountedFilter(int& counter) : destroyed(counter) {}
    ~CountedFilter() override { ++destroyed; }
    int transform(short*, int, unsigned long) override { return 0; }
    void untransform(short*, int, unsigned long) override {}
    int transformMul(short*, int, unsigned long, int, unsigned long) override { return 0; }
    void untransformMul(short*, int, unsigned long, int, unsigned long) override {}

private:
    int& destroyed;
};

TEST(CWaveletEncoder, ConstantPlanesKeepOnlyTheirLowPassBand) {
    Forward<short> work(64, 72, 3);
    test::setSamples(work.image, std::vector<short>(64 * 72 * 3, 100));
    work.encoder.transform();
    for (int p = 0; p < 3; ++p)
        for (int r = 0; r < 72; ++r)
            for (int c = 0; c < 64; ++c)
                ASSERT_EQ(work.image.row(p, r)[c], r % 32 == 0 && c % 32 == 0 ? 100 : 0);
}

TEST(CWaveletEncoder, FirstLevelIsRowsThenColumns) {
    Forward<short> work(4, 4);
    test::fillRandom(work.image, 255, 3);
    auto expected = samplesOf(work.image);
    qmx::CFilter5_3<short> filter;
    for (std::size_t r = 0; r < 4; ++r)
        filter.transform(expected.data() + 4 * r, 4, 1);
    for (std::size_t c = 0; c < 4; ++c)
        filter.transform(expected.data() + c, 4, 4);
    work.encoder.transform();
    EXPECT_EQ(work.encoder.getLevels(), 1);
    EXPECT_EQ(samplesOf(work.image), expected);
}

TEST(CWaveletEncoder, ThinAndTinyImagesAreNotTransformed) {
    for (const auto& [width, height] : {std::pair{3, 100}, {100, 2}, {1, 1}, {1, 50}}) {
        Forward<int> work(width, height);
        test::fillRandom(work.image, 65535, 4);
        const auto before = samplesOf(work.image);
        work.encoder.transform();
        EXPECT_EQ(samplesOf(work.image), before) << width << " x " << height;
    }
}

TEST(CWaveletEncoder, TheLastColumnOfAWideTallLevelIsNotFilteredVertically) {
    // Only column 2000 varies, and only along its own direction: filtered rows keep it in place, so
    // the second level leaves it as the first one made it.
    Forward<short> work(2001, 1500);
    work.image.clear();
    test::Random random(8);
    for (int r = 0; r < 1500; ++r)
        work.image.row(0, r)[2000] = static_cast<short>(random.below(200));
    std::vector<short> firstLevel(1500);
    for (int r = 0; r < 1500; ++r)
        firstLevel[static_cast<std::size_t>(r)] = work.image.row(0, r)[2000];
    work.encoder.transform();

    // By the formulas: level 1 rows, level 1 column, level 2 rows, and no level 2 column; levels 3
    // to 5 touch every fourth row only.
    std::vector<std::vector<short>> rows;
    qmx::CFilter5_3<short> filter;
    for (const short sample : firstLevel) {
        std::vector<short> row(2001, 0);
        row[2000] = sample;
        filter.transform(row.data(), 2001, 1);
        rows.push_back(row);
    }
    std::vector<short> column;
    for (const auto& row : rows)
        column.push_back(row[2000]);
    filter.transform(column.data(), 1500, 1);
    std::vector<short> column1998;
    for (const auto& row : rows)
        column1998.push_back(row[1998]);
    filter.transform(column1998.data(), 1500, 1);
    for (int r = 2; r < 1500; r += 4) {
        const auto i = static_cast<std::size_t>(r);
        std::vector<short> row(1001, 0);
        row[1000] = column[i];
        row[999] = column1998[i];
        filter.transform(row.data(), 1001, 1);
        ASSERT_EQ(work.image.row(0, r)[2000], row[1000]) << r;
    }
}

TEST(CWaveletEncoder, KillBeforeTransformLeavesThePlanesUntouched) {
    Forward<short> work(64, 64);
    test::fillRandom(work.image, 255, 5);
    const auto before = samplesOf(work.image);
    work.encoder.kill();
    work.encoder.transform();
    EXPECT_EQ(samplesOf(work.image), before);
}

TEST(CWaveletEncoder, OwnsImageAndFilterOnlyWhenTold) {
    int destroyed = 0;
    {
        const qmx::CWaveletEncoder<short> owner(new CImageData<short>(8, 8, 1),
                                                new CountedFilter(destroyed), true);
    }
    EXPECT_EQ(destroyed, 1);
    {
        CImageData<short> image(8, 8, 1);
        CountedFilter filter(destroyed);
        { const qmx::CWaveletEncoder<short> guest(&image, &filter, false); }
        EXPECT_EQ(destroyed, 1);
    }
    EXPECT_EQ(destroyed, 2);
}

}  // namespace
