#include "bitstream/CBitReader.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitReader;
using qmx::kThrownEndOfStream;
using test::Bits;
using test::Bytes;
using test::Field;

TEST(CBitReader, RandomFieldsComeBackFromEverySmallBuffer) {
    for (std::size_t size = 0; size <= 40; ++size)
        for (std::uint64_t seed = 0; seed < 40; ++seed) {
            SCOPED_TRACE(size);
            const auto fields = test::randomFields(8 * size, seed, 1, seed % 4 == 0 ? 3 : 63);
            Bytes bytes(size);
            qmx::CBitWriter writer(bytes.data(), size);
            test::writeFields(writer, fields);
            writer.flush();
            CBitReader reader(bytes.data(), size);
            std::uint64_t count = 0;
            for (Field field : fields) {
                ASSERT_EQ(reader.readInt(field.width), field.value & qmx::lowBits(field.width));
                count += static_cast<std::uint64_t>(field.width);
                ASSERT_EQ(reader.getTotal(), count);
            }
            ASSERT_EQ(test::thrownBy([&] { reader.readInt(1); }), kThrownEndOfStream);
        }
}

TEST(CBitReader, EveryBufferThrowsAtTheFirstBitBehindItsEnd) {
    for (std::size_t size = 0; size <= 40; ++size)
        for (int width = 1; width < 64; ++width) {
            const Bits bits = test::randomBits(8 * size, size + 1);
            const Bytes bytes = test::packed(bits);
            CBitReader reader(bytes.data(), size);
            const auto step = static_cast<std::uint64_t>(width);
            std::uint64_t place = 0;
            for (; place + step <= 8 * size; place += step) {
                ASSERT_EQ(reader.getTotal(), place);
                ASSERT_EQ(reader.readInt(width), test::valueAt(bits, place, width));
            }
            ASSERT_EQ(reader.getTotal(), place);
            ASSERT_EQ(test::thrownBy([&] { reader.readInt(width); }), kThrownEndOfStream);
        }
}

TEST(CBitReader, SingleBitsEndExactlyWithTheData) {
    for (std::size_t size : {0U, 1U, 5U, 7U, 8U, 9U, 16U, 23U}) {
        const Bits bits = test::randomBits(8 * size, size);
        const Bytes bytes = test::packed(bits);
        CBitReader reader(bytes.data(), size);
        for (std::size_t i = 0; i < bits.size(); ++i) {
            ASSERT_EQ(reader.getTotal(), i);
            ASSERT_EQ(reader.readBit(), bits[i] ? 1U : 0U);
        }
        EXPECT_EQ(reader.getTotal(), 8 * size);
        EXPECT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
    }
}

TEST(CBitReader, AFailedReadCountsOneBitTooManyHoweverOftenItIsTried) {
    for (std::size_t size : {0U, 5U, 8U, 13U}) {
        const Bytes bytes(size, 0xFF);
        CBitReader reader(bytes.data(), size);
        test::readBits(reader, 8 * size);
        EXPECT_EQ(reader.getTotal(), 8 * size);
        for (int i = 0; i < 3; ++i) {
            EXPECT_EQ(test::thrownBy([&] { reader.readInt(1); }), kThrownEndOfStream);
            EXPECT_EQ(reader.getTotal(), 8 * size + 1);
        }
        EXPECT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
        EXPECT_EQ(test::thrownBy([&] { reader.countZeros(1); }), kThrownEndOfStream);
        EXPECT_EQ(test::thrownBy([&] { reader.skip(1); }), kThrownEndOfStream);
        EXPECT_EQ(reader.readInt(0), 0U);
    }
}

TEST(CBitReader, AFieldAcrossTheEndConsumesTheBitsBeforeTheEnd) {
    const Bytes bytes(9, 0xFF);
    CBitReader reader(bytes.data(), bytes.size());
    reader.readInt(40);
    EXPECT_EQ(test::thrownBy([&] { reader.readInt(33); }), kThrownEndOfStream);
    EXPECT_EQ(reader.getTotal(), 73U);
}

TEST(CBitReader, WidthsZeroAndSixtyFourReturnZeroAndConsumeNothing) {
    const Bits bits = test::randomBits(200, 9);
    const Bytes bytes = test::packed(bits);
    CBitReader reader(bytes.data(), bytes.size());
    for (std::size_t place = 0; place < bits.size(); ++place) {
        ASSERT_EQ(reader.readInt(0), 0U);
        ASSERT_EQ(reader.readInt(64), 0U);
        ASSERT_EQ(reader.getTotal(), place);
        ASSERT_EQ(reader.readInt(1), bits[place] ? 1U : 0U);
    }
    EXPECT_EQ(reader.readInt(0), 0U);
    EXPECT_EQ(reader.readInt(64), 0U);
    EXPECT_EQ(reader.getTotal(), bits.size());
}

TEST(CBitReader, WidthsCountModuloSixtyFour) {
    const Bytes bytes(16, 0xFF);
    CBitReader reader(bytes.data(), bytes.size());
    EXPECT_EQ(reader.readInt(65), 1U);
    EXPECT_EQ(reader.readInt(64 + 12), 0xFFFU);
    EXPECT_EQ(reader.readInt(128), 0U);
    EXPECT_EQ(reader.getTotal(), 13U);
}

TEST(CBitReader, BitsBehindTheLastWrittenOneInTheFlushedWordAreZero) {
    Bytes bytes(16, 0xFF);
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    writer.writeInt(~std::uint64_t{0}, 64);
    writer.writeInt(0x7F, 7);
    writer.flush();
    CBitReader reader(bytes.data(), bytes.size());
    reader.skip(64);
    EXPECT_EQ(reader.readInt(7), 0x7FU);
    EXPECT_EQ(reader.readInt(57), 0U);
    EXPECT_EQ(reader.getTotal(), 128U);
}

TEST(CBitReader, AfterCreateBothReadersDeliverTheSameBits) {
    const Bits bits = test::randomBits(8 * 29, 4);
    const Bytes bytes = test::packed(bits);
    for (std::uint64_t place = 0; place <= bits.size(); ++place) {
        CBitReader source(bytes.data(), bytes.size());
        CBitReader copy(nullptr, 0);
        test::readBits(source, place);
        copy.create(&source, 1);
        const std::uint64_t left = bits.size() - place;
        EXPECT_EQ(copy.getTotal(), place);
        const Bits expected(bits.begin() + static_cast<long>(place), bits.end());
        ASSERT_EQ(test::readBits(copy, left), expected);
        ASSERT_EQ(test::readBits(source, left), expected);
        EXPECT_EQ(test::thrownBy([&] { copy.readBit(); }), kThrownEndOfStream);
        EXPECT_EQ(test::thrownBy([&] { source.readBit(); }), kThrownEndOfStream);
    }
}

TEST(CBitReader, SkipEqualsReadingWhatIsSkipped) {
    for (std::size_t size : {0U, 1U, 8U, 9U, 16U, 37U}) {
        const Bits bits = test::randomBits(8 * size, size);
        const Bytes bytes = test::packed(bits);
        for (std::uint64_t place = 0; place <= bits.size(); place += 1 + place % 5)
            for (std::uint64_t length = 0; place + length <= bits.size(); ++length) {
                CBitReader reader(bytes.data(), size);
                test::readBits(reader, place);
                reader.skip(length);
                ASSERT_EQ(reader.getTotal(), place + length);
                const auto rest = test::readBits(reader, bits.size() - place - length);
                const auto first = bits.begin() + static_cast<long>(place + length);
                ASSERT_TRUE(rest == Bits(first, bits.end())) << place << " + " << length;
            }
    }
}

TEST(CBitReader, SkipBehindTheEndThrowsForEveryLength) {
    for (std::size_t size : {0U, 1U, 8U, 9U, 16U, 37U})
        for (std::uint64_t place = 0; place <= 8 * size; ++place) {
            const Bytes bytes(size, 0x3C);
            const std::uint64_t rest = 8 * size - place;
            for (std::uint64_t length : {rest + 1, rest + 63, rest + 64, rest + 65, rest + 1000,
                                         std::uint64_t{1} << 33, ~std::uint64_t{0}}) {
                CBitReader reader(bytes.data(), size);
                test::readBits(reader, place);
                ASSERT_EQ(test::thrownBy([&] { reader.skip(length); }), kThrownEndOfStream);
                ASSERT_EQ(test::thrownBy([&] { reader.readBit(); }), kThrownEndOfStream);
            }
        }
}

TEST(CBitReader, DataMayStandAtAnyAddress) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
        const Bits bits = test::randomBits(8 * 21, offset);
        Bytes bytes(offset, 0xFF);
        const Bytes data = test::packed(bits);
        bytes.insert(bytes.end(), data.begin(), data.end());
        CBitReader reader(bytes.data() + offset, 21);
        EXPECT_EQ(test::readBits(reader, 8 * 21), bits);
    }
}

TEST(CBitReader, StandsInNoFile) {
    EXPECT_EQ(CBitReader(nullptr, 0).filePosition().file, nullptr);
}

}  // namespace
