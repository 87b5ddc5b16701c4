// Coding row by row against coding from planes: the same streams, and the same findings.

#include <algorithm>

#include "container/RawPixels.h"
#include "support/CpuLevels.h"
#include "support/LibraryCodec.h"

namespace {

using namespace qmx;
using test::Bytes;

/// Gives the rows of a raw image, and ends the work of an encoder at one of them.
template <class T, class P>
class RawRows final : public IRowSource<T> {
public:
    explicit RawRows(const test::RawImage& rawImage) : image(rawImage) {}
    void killAt(int row, CWaveletEncoder<T>& encoder) {
        lastRow = row;
        victim = &encoder;
    }
    void load(CImageData<T>& rows, int slot, int r) override {
        const std::size_t rowBytes = image.bytes.size() / static_cast<std::size_t>(image.height);
        loadRow<P>(rows, slot, image.bytes.data() + static_cast<std::size_t>(r) * rowBytes);
        ++loaded;
        if (r == lastRow) victim->kill();
    }

    int loaded = 0;

private:
    const test::RawImage& image;
    CWaveletEncoder<T>* victim = nullptr;
    int lastRow = -1;
};

template <class T>
Bytes streamOf(CWaveletEncoder<T>& encoder) {
    Bytes stream((encoder.getStreamBits() + 7) / 8);
    CBitWriter writer(stream.data(), stream.size());
    encoder.writeStream(writer);
    return stream;
}

template <class T, class P>
void expectSameStreams(const test::RawImage& image) {
    CFilter5_3<T> filter;
    const int planes = image.bytesPerPixel == 3 ? 3 : 1;
    CImageData<T> loaded(image.width, image.height, planes);
    loadPixels<P>(loaded, image.bytes.data(),
                  image.bytes.size() / static_cast<std::size_t>(image.height));
    CWaveletEncoder<T> fromPlanes(&loaded, &filter, false);
    fromPlanes.transform();
    ASSERT_EQ(fromPlanes.codeCoefficients(0), kComplete);

    CImageData<T> untouched(image.width, image.height, planes);
    untouched.clear();
    CWaveletEncoder<T> fromRows(&untouched, &filter, false);
    ASSERT_TRUE(fromRows.canSweep());
    RawRows<T, P> rows(image);
    ASSERT_EQ(fromRows.codeRows(rows), kComplete);

    ASSERT_EQ(fromRows.getTopPlane(), fromPlanes.getTopPlane());
    ASSERT_EQ(fromRows.getLostCoefficients(), fromPlanes.getLostCoefficients());
    ASSERT_EQ(fromRows.getOverlongSections(), fromPlanes.getOverlongSections());
    ASSERT_EQ(fromRows.getEndlessSections(), fromPlanes.getEndlessSections());
    ASSERT_TRUE(test::sameBytes(streamOf(fromPlanes), streamOf(fromRows)));
    for (int p = 0; p < planes; ++p)
        for (int r = 0; r < image.height; ++r)
            ASSERT_EQ(std::count(untouched.row(p, r), untouched.row(p, r) + image.width, 0),
                      image.width);
}

void expectSameStreams(test::Content content, int width, int height) {
    SCOPED_TRACE(testing::Message() << nameOf(content) << ' ' << width << " x " << height);
    const auto imageOf = [&](int bytes, int bits) {
        return test::makeImage(content, bytes, bits, width, height);
    };
    expectSameStreams<short, unsigned char>(imageOf(1, 8));
    expectSameStreams<short, unsigned char>(imageOf(3, 8));
    expectSameStreams<short, unsigned short>(imageOf(2, 11));
    expectSameStreams<int, unsigned short>(imageOf(2, 16));
}

using CodeRows = test::AtCpuLevel;

constexpr test::Content kContents[] = {test::Content::flat, test::Content::gradient,
                                       test::Content::noise, test::Content::photo,
                                       test::Content::sparse};

TEST_P(CodeRows, GivesTheStreamOfThePlanesForSmallSizes) {
    for (int width = 4; width < 40; width += 3)
        for (int height = 4; height < 40; height += 5)
            expectSameStreams(kContents[(width + height) % 5], width, height);
}

TEST_P(CodeRows, GivesTheStreamOfThePlanesForManyLevelsAndBlocks) {
    // 529 x 1030 is tall and wide, with columns that are not filtered.
    constexpr int kSizes[][2] = {{64, 64},  {65, 65},    {127, 66},  {1030, 70}, {70, 600},
                                 {2049, 9}, {529, 1030}, {1537, 97}, {96, 1025}};
    for (const auto& [width, height] : kSizes)
        for (const test::Content content : kContents)
            expectSameStreams(content, width, height);
}

// Samples beyond 12 bits make coefficients that do not fit when they are folded.
TEST_P(CodeRows, CountsCoefficientsThatAreLost) {
    test::RawImage image = test::makeImage(test::Content::noise, 2, 16, 70, 50);
    image.bitsPerPixel = 11;
    expectSameStreams<short, unsigned short>(image);
}

TEST_P(CodeRows, EndsAtTheNextRowWhenKilled) {
    const test::RawImage image = test::makeImage(test::Content::photo, 1, 8, 100, 80);
    CFilter5_3<short> filter;
    CImageData<short> planes(image.width, image.height, 1);
    CWaveletEncoder<short> encoder(&planes, &filter, false);
    RawRows<short, unsigned char> rows(image);
    rows.killAt(17, encoder);
    EXPECT_EQ(encoder.codeRows(rows), kSuspended);
    EXPECT_EQ(rows.loaded, 18);
}

INSTANTIATE_TEST_SUITE_P(Levels, CodeRows, test::allCpuLevels(), test::cpuLevelName());

}  // namespace
