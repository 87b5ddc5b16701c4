#include "bitstream/CBitFileReader.h"

#include <fcntl.h>
#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitFileReader;
using qmx::kThrownEndOfStream;
using test::Bits;
using test::Bytes;
using test::ScratchFile;

constexpr std::uint64_t kWindowBits = 32768;

/// Lengths around all boundaries that a skip can meet when rest bits are left.
std::vector<std::uint64_t> skipLengths(std::uint64_t rest) {
    std::vector<std::uint64_t> lengths{0, 1, 63, 64, 65, 127, 128, std::uint64_t{1} << 33};
    for (std::uint64_t length : {rest - 1, rest, rest + 1, rest + 8, rest + 64})
        if (length + 1 != 0) lengths.push_back(length);
    for (std::uint64_t length : {kWindowBits - 1, kWindowBits, kWindowBits + 1, 3 * kWindowBits})
        lengths.push_back(length);
    return lengths;
}

/// Skips as told and reads to the end, 7 bits at a time.
/// Returns: what was read; nothing if the skip threw 3.
template <class Reader>
std::vector<std::uint64_t> skipAndRead(Reader& reader, std::uint64_t place, std::uint64_t length) {
    std::vector<std::uint64_t> values;
    test::readBits(reader, place % 64);
    for (std::uint64_t i = 0; i < place / 64; ++i) {
        reader.readInt(32);
        reader.readInt(32);
    }
    EXPECT_EQ(reader.getTotal(), place);
    const auto toTheEnd = [&] {
        reader.skip(length);
        values.push_back(reader.getTotal());
        while (values.size() < 200)
            values.push_back(reader.readInt(7));
    };
    const int thrown = test::thrownBy(toTheEnd);
    EXPECT_EQ(thrown, values.size() == 200 ? 0 : kThrownEndOfStream);
    if (thrown != 0) {
        EXPECT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
    }
    return values;
}

TEST(CBitFileReader, DeliversTheBitsOfTheFileAndThenThrows) {
    for (std::size_t size :
         {0U, 1U, 5U, 8U, 13U, 4095U, 4096U, 4097U, 4104U, 5000U, 8192U, 9001U}) {
        SCOPED_TRACE(size);
        const Bits bits = test::randomBits(8 * size, size);
        const ScratchFile file(test::packed(bits));
        CBitFileReader reader(file.get());
        EXPECT_EQ(reader.getTotal(), 0U);
        EXPECT_EQ(test::readBits(reader, bits.size()), bits);
        EXPECT_EQ(reader.getTotal(), bits.size());
        EXPECT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
        EXPECT_EQ(reader.getTotal(), bits.size() + 1);
        EXPECT_EQ(test::thrownBy([&] { reader.readInt(5); }), kThrownEndOfStream);
    }
}

TEST(CBitFileReader, TotalCountsEveryFieldAcrossWindows) {
    const auto fields = test::randomFields(8 * 12345, 2, 0, 63);
    const ScratchFile file(test::packed(test::bitsOf(fields)));
    CBitFileReader reader(file.get());
    std::uint64_t count = 0;
    for (const test::Field& field : fields) {
        ASSERT_EQ(reader.readInt(field.width), field.value & qmx::lowBits(field.width));
        count += static_cast<std::uint64_t>(field.width);
        ASSERT_EQ(reader.getTotal(), count);
    }
    EXPECT_EQ(reader.getStoredTotal(), 8U * 12345);
}

TEST(CBitFileReader, FortyThousandBitsCountAsSuch) {
    const ScratchFile file(Bytes(6000, 0x55));
    CBitFileReader reader(file.get());
    for (int i = 0; i < 40000 / 50; ++i)
        reader.readInt(50);
    EXPECT_EQ(reader.getTotal(), 40000U);
}

TEST(CBitFileReader, StartsWhereTheFileStandsAndReadsNothingBeforeTheFirstBit) {
    const ScratchFile file({'h', 'e', 'a', 'd', 0x12, 0x34, 0x56, 0x78, 0x9A});
    std::fseek(file.get(), 4, SEEK_SET);
    CBitFileReader reader(file.get());
    EXPECT_EQ(std::ftell(file.get()), 4);
    EXPECT_EQ(reader.filePosition().file, file.get());
    EXPECT_EQ(reader.filePosition().offsetBytes, 4);
    EXPECT_EQ(reader.readInt(40), 0x9A78563412U);
    EXPECT_EQ(reader.getTotal(), 40U);
    EXPECT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
}

TEST(CBitFileReader, NothingLeftInTheFileThrowsOnTheFirstBit) {
    const ScratchFile file({1, 2, 3});
    std::fseek(file.get(), 0, SEEK_END);
    CBitFileReader reader(file.get());
    EXPECT_EQ(test::thrownBy([&] { reader.readInt(1); }), kThrownEndOfStream);
}

TEST(CBitFileReader, GoesOnInItsFileBehindTheDataOfAReaderInMemory) {
    const ScratchFile file(Bytes(100, 0xAA));
    CBitFileReader reader(file.get());
    const Bytes eight(8, 0x11);
    qmx::CBitReader memory(eight.data(), eight.size());
    reader.create(&memory, 64);
    EXPECT_EQ(reader.readInt(32), 0x11111111U);
    EXPECT_EQ(reader.readInt(32), 0x11111111U);
    // As many bytes of the file as stood in memory count as read.
    EXPECT_EQ(test::packed(test::readBits(reader, 92 * 8)), Bytes(92, 0xAA));
    EXPECT_EQ(test::thrownBy([&] { reader.readInt(1); }), kThrownEndOfStream);
}

TEST(CBitFileReader, OthersMayMoveTheFileInBetween) {
    const Bits bits = test::randomBits(8 * 20000, 5);
    const ScratchFile file(test::packed(bits));
    CBitFileReader one(file.get());
    CBitFileReader other(file.get());
    Bits ofOne;
    Bits ofOther;
    for (std::uint64_t place = 0; place + 625 <= bits.size(); place += 625) {
        for (bool bit : test::readBits(one, 625))
            ofOne.push_back(bit);
        std::fseek(file.get(), static_cast<long>(place % 999), SEEK_SET);
        for (bool bit : test::readBits(other, 625))
            ofOther.push_back(bit);
    }
    EXPECT_TRUE(ofOne == bits);
    EXPECT_TRUE(ofOther == bits);
}

TEST(CBitFileReader, SkipsLikeAReaderInMemory) {
    for (std::size_t size : {9U, 4096U, 4099U, 8192U, 8196U, 12295U}) {
        const Bytes bytes = test::packed(test::randomBits(8 * size, size));
        const ScratchFile file(bytes);
        for (std::uint64_t place : {0U, 1U, 63U, 64U, 65U, 70U, 8000U, 32767U, 32768U, 32769U,
                                    32800U, 65535U, 65536U, 65560U}) {
            if (place > 8 * size) continue;
            for (std::uint64_t length : skipLengths(8 * size - place)) {
                std::fseek(file.get(), 0, SEEK_SET);
                CBitFileReader reader(file.get());
                qmx::CBitReader memory(bytes.data(), size);
                ASSERT_TRUE(skipAndRead(memory, place, length) ==
                            skipAndRead(reader, place, length))
                    << size << " bytes, " << length << " bits from " << place;
            }
        }
    }
}

TEST(CBitFileReader, SkipsInARowAddUp) {
    const Bits bits = test::randomBits(8 * 30000, 8);
    const ScratchFile file(test::packed(bits));
    CBitFileReader reader(file.get());
    test::Random random(4);
    std::uint64_t place = 0;
    for (std::uint64_t length = random.below(9000); place + length + 63 <= bits.size();
         length = random.below(9000)) {
        reader.skip(length);
        place += length;
        ASSERT_EQ(reader.getTotal(), place);
        ASSERT_EQ(reader.readInt(63), test::valueAt(bits, place, 63));
        place += 63;
    }
    EXPECT_GT(place, 8U * 25000);
}

TEST(CBitFileReader, SkipOfTheGreatestLengthThrows) {
    for (std::uint64_t place : {0U, 1U, 64U, 1000U}) {
        const ScratchFile file(Bytes(10000, 0x77));
        CBitFileReader reader(file.get());
        test::readBits(reader, place);
        EXPECT_EQ(test::thrownBy([&] { reader.skip(~std::uint64_t{0}); }), kThrownEndOfStream)
            << "from bit " << place;
    }
}

TEST(CBitFileReader, ClosesTheFileOnlyIfTold) {
    ScratchFile scratch({1});
    const int descriptor = fileno(scratch.get());
    { CBitFileReader reader(scratch.get()); }
    EXPECT_NE(fcntl(descriptor, F_GETFD), -1);
    { CBitFileReader reader(scratch.release(), true); }
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
}

}  // namespace
