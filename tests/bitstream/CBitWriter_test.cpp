#include "bitstream/CBitWriter.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitWriter;
using qmx::kThrownEndOfStream;
using test::Bits;
using test::Bytes;
using test::Field;

constexpr unsigned char kUntouched = 0xA5;

/// A writer on a buffer of exactly sizeBytes bytes, with a plain list of the bits it was given.
struct Model {
    explicit Model(std::size_t sizeBytes)
        : bytes(sizeBytes, kUntouched), writer(bytes.data(), sizeBytes) {}

    /// Writes one field to both; the writer has to throw 3 exactly if the field does not fit.
    /// Returns: whether it fitted.
    bool write(Field field) {
        test::append(bits, field);
        const bool fits = bits.size() <= 8 * bytes.size();
        const int thrown = test::thrownBy([&] { writer.writeInt(field.value, field.width); });
        EXPECT_EQ(thrown, fits ? 0 : kThrownEndOfStream) << "after " << bits.size() << " bits";
        EXPECT_EQ(writer.getTotal(), std::min(bits.size(), 8 * bytes.size()));
        return fits;
    }
    void expectBytesOfAllBits() {
        EXPECT_TRUE(test::sameBytes(test::packed(bits, bytes.size()), bytes));
    }

    Bytes bytes;
    CBitWriter writer;
    Bits bits;
};

TEST(CBitWriter, RandomFieldsFillEverySmallBufferToItsLastBit) {
    for (std::size_t size = 0; size <= 40; ++size)
        for (std::uint64_t seed = 0; seed < 40; ++seed) {
            SCOPED_TRACE(size);
            const int widest = seed % 4 == 0 ? 3 : 64;
            Model model(size);
            bool fits = true;
            for (Field field : test::randomFields(8 * size + 65, seed * 41 + size, 0, widest))
                if (fits) fits = model.write(field);
            ASSERT_FALSE(fits);
            model.expectBytesOfAllBits();
        }
}

TEST(CBitWriter, SingleBitsFillEverySmallBufferToItsLastBit) {
    for (std::size_t size = 0; size <= 40; ++size) {
        Bytes bytes(size, kUntouched);
        CBitWriter writer(bytes.data(), size);
        const Bits bits = test::randomBits(8 * size + 1, size);
        for (std::size_t i = 0; i < 8 * size; ++i) {
            ASSERT_EQ(writer.getTotal(), i);
            ASSERT_EQ(test::thrownBy([&] { writer.writeBit(bits[i] ? 1 : 0); }), 0);
        }
        EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
        EXPECT_EQ(writer.getTotal(), 8 * size);
        EXPECT_TRUE(test::sameBytes(test::packed(bits, size), bytes));
    }
}

TEST(CBitWriter, FlushOnceBehindTheLastBitStoresEveryStreamThatFits) {
    for (std::size_t size : {1U, 7U, 8U, 9U, 13U, 16U, 21U})
        for (std::uint64_t count = 0; count <= 8 * size; ++count) {
            SCOPED_TRACE(count);
            Model model(size);
            for (Field field : test::randomFields(count, count, 1, 20))
                ASSERT_TRUE(model.write(field));
            model.writer.flush();
            const Bytes expected = test::packed(model.bits);
            const Bytes written(model.bytes.begin(),
                                model.bytes.begin() + static_cast<long>(expected.size()));
            EXPECT_TRUE(test::sameBytes(expected, written));
            EXPECT_EQ(model.writer.getTotal(), count);
        }
}

TEST(CBitWriter, BytesOfTheExampleFields) {
    Bytes bytes(8, kUntouched);
    CBitWriter writer(bytes.data(), bytes.size());
    writer.writeInt(5, 3);
    writer.writeInt(0, 2);
    writer.writeInt(9, 5);
    writer.flush();
    EXPECT_TRUE(test::sameBytes({0x25, 0x01, 0, 0, 0, 0, 0, 0}, bytes));
}

TEST(CBitWriter, WidthZeroChangesNothingAtAnyPlace) {
    for (int place = 0; place <= 104; ++place) {
        Model model(13);
        for (int i = 0; i < place; ++i)
            model.write({1, 1});
        model.write({~std::uint64_t{0}, 0});
        model.writer.flush();
        EXPECT_EQ(model.writer.getTotal(), static_cast<std::uint64_t>(place));
        for (int i = place; i < 104; ++i)
            ASSERT_TRUE(model.write({0, 1}));
        EXPECT_FALSE(model.write({0, 1}));
        model.expectBytesOfAllBits();
    }
}

TEST(CBitWriter, WidthSixtyFourWritesAllBitsAtAnyPlace) {
    for (int place = 0; place < 64; ++place) {
        Model model(24);
        model.write({0, place});
        ASSERT_TRUE(model.write({0x8123456789ABCDEF, 64}));
        ASSERT_TRUE(model.write({0, 128 - place > 64 ? 64 : 128 - place}));
        model.writer.flush();
        const Bytes expected = test::packed(model.bits, 24);
        for (std::size_t i = 0; i < model.bits.size() / 8; ++i)
            ASSERT_EQ(model.bytes[i], expected[i]) << "place " << place << " byte " << i;
    }
}

TEST(CBitWriter, NoRoomAtAllThrowsOnTheFirstBit) {
    CBitWriter writer(nullptr, 0);
    writer.writeInt(1, 0);
    writer.flush();
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(test::thrownBy([&] { writer.writeInt(1, 1); }), kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 0U);
    EXPECT_EQ(test::thrownBy([&] { writer.writeBit(1); }), kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 0U);
}

TEST(CBitWriter, FieldThatDoesNotFitLeavesItsFirstBitsInPlace) {
    for (std::size_t size : {13U, 16U}) {
        for (int room = 0; room < 64; ++room) {
            Model model(size);
            const auto filled = 8 * size - static_cast<std::size_t>(room);
            for (std::size_t i = 0; i < filled; ++i)
                model.write({i & 1, 1});
            EXPECT_FALSE(model.write({0xDEADBEEF98765431, room + 1}));
            model.expectBytesOfAllBits();
        }
    }
}

TEST(CBitWriter, FlushTwiceStoresTheSameBytesAndWritingGoesOn) {
    for (std::size_t size : {13U, 16U, 24U}) {
        Model model(size);
        for (Field field : test::randomFields(8 * size, size, 1, 9)) {
            ASSERT_TRUE(model.write(field));
            model.writer.flush();
            const Bytes once = model.bytes;
            model.writer.flush();
            ASSERT_TRUE(test::sameBytes(once, model.bytes));
        }
        model.expectBytesOfAllBits();
    }
}

TEST(CBitWriter, FlushAfterTheOverflowChangesNothing) {
    for (std::size_t size : {5U, 8U, 13U}) {
        Model model(size);
        for (std::size_t i = 0; i < 8 * size; ++i)
            model.write({i % 3, 1});
        EXPECT_FALSE(model.write({1, 1}));
        model.writer.flush();
        model.expectBytesOfAllBits();
        EXPECT_EQ(model.writer.getTotal(), 8 * size);
    }
}

TEST(CBitWriter, NothingIsStoredBeforeTheWordIsFullOrFlushed) {
    Bytes bytes(16, kUntouched);
    CBitWriter writer(bytes.data(), bytes.size());
    writer.writeInt(0, 63);
    EXPECT_TRUE(test::sameBytes(Bytes(16, kUntouched), bytes));
    writer.writeInt(0, 1);
    EXPECT_EQ(bytes[7], 0);
    EXPECT_EQ(bytes[8], kUntouched);
}

TEST(CBitWriter, BufferMayStandAtAnyAddress) {
    for (std::size_t offset = 0; offset < 8; ++offset) {
        Bytes bytes(offset + 21, 0);
        CBitWriter writer(bytes.data() + offset, 21);
        const Bits bits = test::randomBits(21 * 8, offset);
        test::writeBits(writer, bits);
        writer.flush();
        const Bytes written(bytes.begin() + static_cast<long>(offset), bytes.end());
        EXPECT_TRUE(test::sameBytes(test::packed(bits), written));
    }
}

TEST(CBitWriter, WordsGoInLikeFields) {
    test::Random random(3);
    std::uint64_t words[5];
    for (std::uint64_t& word : words)
        word = test::anyWord(random);
    for (int filled = 0; filled < 64; ++filled)
        for (std::uint64_t count = 0; count <= 320; count += 5) {
            Model model(37);
            model.write({0x5555, filled});
            const int thrown = test::thrownBy([&] { model.writer.writeWords(words, count); });
            for (std::uint64_t i = 0; i < count; ++i)
                model.bits.push_back((words[i / 64] >> i % 64 & 1) != 0);
            const std::size_t total = model.bits.size();
            ASSERT_EQ(thrown, total > 296 ? kThrownEndOfStream : 0) << total;
            ASSERT_EQ(model.writer.getTotal(), std::min<std::size_t>(total, 296));
            model.writer.flush();
            const auto known = static_cast<long>(std::min<std::size_t>((total + 7) / 8, 37));
            const Bytes written(model.bytes.begin(), model.bytes.begin() + known);
            ASSERT_TRUE(test::sameBytes(test::packed(model.bits, written.size()), written));
        }
}

TEST(CBitWriter, AnnouncedSizeHasNoEffect) {
    Model model(2);
    model.writer.setSize(100);
    EXPECT_TRUE(model.write({0xBEEF, 16}));
    EXPECT_FALSE(model.write({1, 1}));
    model.expectBytesOfAllBits();
}

}  // namespace
