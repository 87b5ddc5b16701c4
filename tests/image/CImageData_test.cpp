#include "image/CImageData.h"

#include <gtest/gtest.h>
#include <new>

#include "bitstream/Status.h"
#include "support/ThrownBy.h"

namespace {

using qmx::CImageData;
using test::thrownBy;

/// A file in memory, read from its start.
struct MemoryFile {
    explicit MemoryFile(std::vector<unsigned char> contents)
        : bytes(std::move(contents)), file(fmemopen(bytes.data(), bytes.size(), "rb")) {}
    ~MemoryFile() { std::fclose(file); }
    std::vector<unsigned char> bytes;
    std::FILE* file;
};

TEST(CImageData, RowsArePaddedToEightSamplesAndPlanesBeginAtCacheLines) {
    EXPECT_EQ(CImageData<short>(5, 2, 1).stride, 8);
    EXPECT_EQ(CImageData<short>(8, 1, 3).stride, 8);
    EXPECT_EQ(CImageData<short>(9, 1, 3).stride, 16);
    EXPECT_EQ(CImageData<int>(0, 0, 1).stride, 0);
    const CImageData<short> image(9, 3, 3);
    for (const short* plane : image.plane)
        EXPECT_EQ(reinterpret_cast<std::uintptr_t>(plane) % 64, 0U);
}

TEST(CImageData, PlaneCountsOutsideOneToThreeThrowFive) {
    EXPECT_EQ(thrownBy([] { CImageData<short>(4, 4, 0); }), qmx::kThrownBadPlaneCount);
    EXPECT_EQ(thrownBy([] { CImageData<short>(4, 4, 4); }), qmx::kThrownBadPlaneCount);
    EXPECT_EQ(thrownBy([] { CImageData<int>(4, 4, 3); }), 0);
}

TEST(CImageData, NegativeHeightIsAnImpossibleArray) {
    EXPECT_THROW(CImageData<short>(8, -1000, 1), std::bad_alloc);
}

TEST(CImageData, NegativeWidthCannotBeRead) {
    MemoryFile raw({1, 2, 3});
    CImageData<short> image(-5, 1, 1);
    EXPECT_THROW(image.readRaw(raw.file), std::bad_alloc);
}

TEST(CImageData, ThreePlaneRowsAreTakenApart) {
    MemoryFile raw({10, 20, 30, 11, 21, 31});
    CImageData<short> image(2, 1, 3);
    image.readRaw(raw.file);
    for (int p = 0; p < 3; ++p) {
        EXPECT_EQ(image.row(p, 0)[0], 10 * (p + 1));
        EXPECT_EQ(image.row(p, 0)[1], 10 * (p + 1) + 1);
    }
}

TEST(CImageData, SixteenBitSamplesAreLittleEndianAndUnsigned) {
    MemoryFile raw({0x34, 0x12, 0xFF, 0xFF});
    CImageData<int> image(2, 1, 1);
    image.readRaw(raw.file);
    EXPECT_EQ(image.row(0, 0)[0], 0x1234);
    EXPECT_EQ(image.row(0, 0)[1], 65535);
}

TEST(CImageData, AFileOneByteShortThrowsThreeAfterTheRowsBefore) {
    MemoryFile raw({1, 2, 3, 4, 5});
    CImageData<short> image(2, 3, 1);
    EXPECT_EQ(thrownBy([&] { image.readRaw(raw.file); }), qmx::kThrownEndOfStream);
    EXPECT_EQ(image.row(0, 1)[1], 4);
}

TEST(CImageData, BytesBehindTheImageAreIgnored) {
    MemoryFile raw({1, 2, 3, 4, 5, 6, 7});
    CImageData<short> image(2, 3, 1);
    image.readRaw(raw.file);
    EXPECT_EQ(image.row(0, 2)[1], 6);
}

template <class T>
void fill(CImageData<T>& image, T value) {
    for (int r = 0; r < image.y; ++r)
        for (int c = 0; c < image.x; ++c)
            image.row(0, r)[c] = value;
}

TEST(CImageData, MeanSquaredErrorOfEqualAndOfShiftedImages) {
    CImageData<short> a(5, 4, 1);
    CImageData<short> b(5, 4, 1);
    fill<short>(a, 7);
    fill<short>(b, 7);
    EXPECT_EQ(a.getMSE(&b), 0.0);
    fill<short>(b, 8);
    EXPECT_EQ(a.getMSE(&b), 1.0);
    EXPECT_EQ(b.getMSE(&a), 1.0);
}

TEST(CImageData, MeanSquaredErrorNeedsEqualGeometry) {
    CImageData<short> a(5, 4, 1);
    CImageData<short> wider(6, 4, 1);
    CImageData<short> taller(5, 5, 1);
    CImageData<short> deeper(5, 4, 2);
    EXPECT_EQ(a.getMSE(&wider), -1.0);
    EXPECT_EQ(a.getMSE(&taller), -1.0);
    EXPECT_EQ(a.getMSE(&deeper), -1.0);
}

TEST(CImageData, SixteenBitDifferencesWrap) {
    CImageData<short> a(1, 1, 1);
    CImageData<short> b(1, 1, 1);
    fill<short>(a, -32768);
    fill<short>(b, 32767);
    EXPECT_EQ(a.getMSE(&b), 1.0);
    CImageData<int> c(1, 1, 1);
    CImageData<int> d(1, 1, 1);
    fill(c, 0);
    fill(d, 65535);
    EXPECT_EQ(c.getMSE(&d), 65535.0 * 65535.0);
}

}  // namespace
