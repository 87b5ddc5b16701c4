#include "container/TKHeader.h"

#include <cstddef>
#include <gtest/gtest.h>

#include "container/SampleDispatch.h"
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
int typesOf(int bytesPerPixel, int bitsPerPixel,
            MostBitsOfShort mostBits = MostBitsOfShort::inFiles) {
    return qmx::dispatchSamples(
        qmx::makeHeader(bytesPerPixel, bitsPerPixel, 1, 1), mostBits,
        []<class T, class P>() { return static_cast<int>(800 * sizeof(T) + 8 * sizeof(P)); },
        [] { return 0; });
}

TEST(SampleDispatch, ChoosesTheTypesByBytesAndBits) {
    EXPECT_EQ(typesOf(1, 8), 1608);
    EXPECT_EQ(typesOf(1, 255), 1608);
    EXPECT_EQ(typesOf(3, 0), 1608);
    EXPECT_EQ(typesOf(2, 12), 1616);
    EXPECT_EQ(typesOf(2, 0), 1616);
    EXPECT_EQ(typesOf(2, 13), 3216);
    EXPECT_EQ(typesOf(2, 255), 3216);
}

TEST(SampleDispatch, MemoryGoesOverToIntOneBitEarlier) {  // Quirk 18
    EXPECT_EQ(typesOf(2, 11, MostBitsOfShort::inMemory), 1616);
    EXPECT_EQ(typesOf(2, 12, MostBitsOfShort::inMemory), 3216);
    EXPECT_EQ(typesOf(1, 12, MostBitsOfShort::inMemory), 1608);
}

TEST(SampleDispatch, OtherBytesPerPixelHaveNoTypes) {
    EXPECT_EQ(typesOf(0, 8), 0);
    EXPECT_EQ(typesOf(4, 8), 0);
    EXPECT_EQ(typesOf(255, 8), 0);
}

}  // namespace
