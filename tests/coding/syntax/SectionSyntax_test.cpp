#include "coding/syntax/SectionSyntax.h"

#include <gtest/gtest.h>

#include "support/Bytes.h"

namespace {

using namespace qmx;
using test::Bytes;

TEST(SectionSyntax, LengthFieldsNarrowByTwoBitsPerOrder) {
    EXPECT_EQ(sampleCountBits(512, 512), 19);
    EXPECT_EQ(lengthFieldBits(19, 0), 20);
    EXPECT_EQ(lengthFieldBits(19, 1), 18);
    EXPECT_EQ(lengthFieldBits(19, 5), 10);
    EXPECT_EQ(sampleCountBits(0, 9), 0);
    EXPECT_EQ(sampleCountBits(1, 1), 1);
    EXPECT_EQ(sampleCountBits(65535, 65535), 32);
    EXPECT_EQ(lengthFieldBits(3, 7), -10);
}

TEST(SectionSyntax, HeadersReadBackAndTheEndMarkEnds) {
    Bytes bytes(32);
    CBitWriter writer(bytes.data(), bytes.size());
    writeTopPlane(writer, 61);
    writeSectionHeader(writer, {2, 5, true, 700}, 19);
    writeSectionHeader(writer, {0, 0, false, 0}, 19);
    writeEndMark(writer);
    writer.flush();
    EXPECT_EQ(writer.getTotal(), 8U + 6 + 10 + 6 + 20 + 11);

    CBitReader reader(bytes.data(), bytes.size());
    EXPECT_EQ(readTopPlane(reader), 61);
    SectionHeader header{};
    ASSERT_TRUE(readSectionHeader(reader, header, 19));
    EXPECT_EQ(header.plane, 2);
    EXPECT_EQ(header.order, 5);
    EXPECT_TRUE(header.isRefinement);
    EXPECT_EQ(header.lengthBits, 700U);
    ASSERT_TRUE(readSectionHeader(reader, header, 19));
    EXPECT_EQ(header.plane, 0);
    EXPECT_FALSE(header.isRefinement);
    EXPECT_EQ(header.lengthBits, 0U);
    EXPECT_FALSE(readSectionHeader(reader, header, 19));
}

TEST(SectionSyntax, TopPlane255MeansNone) {
    const unsigned char bytes[] = {255, 254};
    CBitReader reader(bytes, sizeof bytes);
    EXPECT_EQ(readTopPlane(reader), -1);
    EXPECT_EQ(readTopPlane(reader), 254);
}

TEST(SectionSyntax, FieldsStandLowestBitFirst) {
    Bytes bytes(8);
    CBitWriter writer(bytes.data(), bytes.size());
    writeSectionHeader(writer, {1, 2, true, 5}, 7);
    writer.flush();
    // 1 in 2 bits, 2 in 3 bits, 1 in 1 bit, 5 in 4 bits
    EXPECT_EQ(bytes[0], 1 | 2 << 2 | 1 << 5 | (5 & 3) << 6);
    EXPECT_EQ(bytes[1], 5 >> 2);
}

TEST(SectionSyntax, OfATooLongLengthTheLowBitsAreWritten) {  // Quirk 11
    Bytes bytes(8);
    CBitWriter writer(bytes.data(), bytes.size());
    writeSectionHeader(writer, {0, 1, false, 0x1234}, 9);
    writer.flush();
    EXPECT_EQ(writer.getTotal(), 6U + 8);
    CBitReader reader(bytes.data(), bytes.size());
    SectionHeader header{};
    readSectionHeader(reader, header, 9);
    EXPECT_EQ(header.lengthBits, 0x34U);
}

TEST(SectionSyntax, ANegativeWidthCountsModuloSixtyFour) {
    // Order 7 of a 2 x 2 image: 3 + 1 - 14 = -10, which reads 54 bits.
    Bytes bytes(16, 0);
    bytes[0] = 7 << 2;
    bytes[1] = 0x80;
    CBitReader reader(bytes.data(), bytes.size());
    SectionHeader header{};
    ASSERT_TRUE(readSectionHeader(reader, header, 3));
    EXPECT_EQ(header.order, 7);
    EXPECT_EQ(reader.getTotal(), 6U + 54);
    EXPECT_EQ(header.lengthBits, 0x80U << 2);
}

TEST(SectionSyntax, AHeaderThatIsNotAllThereIsMissing) {
    // Order 1 of 9 bits: 6 bits and 8 of length.
    Bytes bytes(8);
    CBitWriter writer(bytes.data(), bytes.size());
    writeSectionHeader(writer, {0, 1, false, 5}, 9);
    writeEndMark(writer);
    writer.flush();
    constexpr SectionBounds kBounds{1, 2, 9};
    for (std::uint64_t left = 0; left <= 16; ++left) {
        CBitReader reader(bytes.data(), bytes.size());
        SectionHeader header{};
        const NextSection next = readNextSection(reader, header, kBounds, left);
        EXPECT_EQ(next, left < 6 + 8 ? NextSection::missing : NextSection::present) << left;
        EXPECT_LE(reader.getTotal(), left);
    }
}

TEST(SectionSyntax, AnEndMarkNeedsTwoBits) {
    const Bytes bytes(1, 3);
    for (std::uint64_t left = 0; left <= 3; ++left) {
        CBitReader reader(bytes.data(), bytes.size());
        SectionHeader header{};
        EXPECT_EQ(readNextSection(reader, header, {1, 2, 9}, left),
                  left < 2 ? NextSection::missing : NextSection::endMark);
        EXPECT_LE(reader.getTotal(), left);
    }
}

TEST(SectionSyntax, AForeignOrderWhoseLengthIsNotAllThereIsMissing) {
    // Order 7 reads 9 + 1 - 14 = -4, which are 60 bits.
    const Bytes bytes(16, 7 << 2);
    for (const std::uint64_t left : {65U, 66U}) {
        CBitReader reader(bytes.data(), bytes.size());
        SectionHeader header{};
        EXPECT_EQ(readNextSection(reader, header, {1, 2, 9}, left),
                  left < 66 ? NextSection::missing : NextSection::foreign);
    }
}

}  // namespace
