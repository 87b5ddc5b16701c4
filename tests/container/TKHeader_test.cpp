#include "container/TKHeader.h"

#include <cstddef>
#include <gtest/gtest.h>

#include "container/CoefficientDispatch.h"
#include "support/Bytes.h"

namespace {

using qmx::TKHeader;

TEST(TKHeader, BytesOfAGrayImage) {
    const TKHeader header = qmx::makeHeader(1, 8, 640, 480);
    test::Bytes bytes(sizeof header);
    std::memcpy(bytes.data(), &header, sizeof header);
    EXPECT_EQ(bytes, (test::Bytes{0x54, 0x4B, 0x33, 0x30, 0x01, 0x08, 0x80, 0x02, 0xE0, 0x01, 0, 0,
                                  0, 0, 0, 0}));
}

TEST(TKHeader, NumbersAreTruncatedToTheirFields) {
    const TKHeader header = qmx::makeHeader(257, 264, 70000, -1);
    EXPECT_EQ(header.bytesPerPixel, 1);
    EXPECT_EQ(header.bitsPerPixel, 8);
    EXPECT_EQ(header.xSize, 4464);
    EXPECT_EQ(header.ySize, 65535);
}

TEST(TKHeader, OnlyItsMagicIsRecognised) {
    TKHeader header = qmx::makeHeader(1, 8, 1, 1);
    EXPECT_TRUE(header.isRecognised());
    header.reserved[3] = 77;
    EXPECT_TRUE(header.isRecognised());
    header.magic[3] = '1';
    EXPECT_FALSE(header.isRecognised());
    EXPECT_FALSE(TKHeader{}.isRecognised());
}

TEST(TKHeader, IsABaseThatOnlyDerivedClassesSee) {
    struct Codec : qmx::CTeskHeader {
        int width() const { return xSize; }
    };
    EXPECT_EQ(Codec().width(), 0);
    EXPECT_FALSE((std::is_convertible_v<Codec*, TKHeader*>));
}

using qmx::MostBitsOfShort;

/// Returns: bits of the coefficient and of the sample type, or 0 for a format without one.
int coefficientBits(int bytesPerPixel, int bitsPerPixel,
                    MostBitsOfShort mostBits = MostBitsOfShort::inFiles) {
    return qmx::dispatchCoefficients(
        qmx::makeHeader(bytesPerPixel, bitsPerPixel, 1, 1), mostBits,
        []<class T>() { return static_cast<int>(8 * sizeof(T)); }, [] { return 0; });
}

TEST(CoefficientDispatch, ChoosesTheTypeByBytesAndBits) {
    EXPECT_EQ(coefficientBits(1, 8), 16);
    EXPECT_EQ(coefficientBits(1, 255), 16);
    EXPECT_EQ(coefficientBits(3, 0), 16);
    EXPECT_EQ(coefficientBits(3, 255), 16);
    EXPECT_EQ(coefficientBits(2, 12), 16);
    EXPECT_EQ(coefficientBits(2, 0), 16);
    EXPECT_EQ(coefficientBits(2, 13), 32);
    EXPECT_EQ(coefficientBits(2, 255), 32);
}

TEST(CoefficientDispatch, MemoryGoesOverToIntOneBitEarlier) {  // Quirk 17
    EXPECT_EQ(coefficientBits(2, 11, MostBitsOfShort::inMemory), 16);
    EXPECT_EQ(coefficientBits(2, 12, MostBitsOfShort::inMemory), 32);
    EXPECT_EQ(coefficientBits(1, 12, MostBitsOfShort::inMemory), 16);
}

TEST(CoefficientDispatch, OtherBytesPerPixelHaveNoType) {
    for (const int bytes : {0, 4, 255})
        EXPECT_EQ(coefficientBits(bytes, 8), 0);
}

}  // namespace
