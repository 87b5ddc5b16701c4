#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitFileReader.h"
#include "bitstream/CBitFileWriter.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/CBitLazyWriter.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitChunkWriter;
using qmx::CBitWriter;
using test::Bits;
using test::Bytes;
using test::Field;
using Fields = std::vector<Field>;

Bytes throughBuffer(const Fields& fields, std::size_t sizeBytes) {
    Bytes bytes(sizeBytes);
    CBitWriter writer(bytes.data(), sizeBytes);
    test::writeFields(writer, fields);
    writer.flush();
    return bytes;
}

Bytes throughLazyBlock(const Fields& fields, std::size_t sizeBytes) {
    qmx::CBitLazyWriter writer(sizeBytes, true);
    test::writeFields(writer, fields);
    writer.flush();
    return {writer.getBlock(), writer.getBlock() + sizeBytes};
}

Bytes throughFile(const Fields& fields) {
    const test::ScratchFile file;
    {
        qmx::CBitFileWriter writer(file.get());
        test::writeFields(writer, fields);
    }
    return file.bytes();
}

Bytes throughChunksAndFile(const Fields& fields) {
    const test::ScratchFile file;
    CBitChunkWriter chunks;
    test::writeFields(chunks, fields);
    {
        qmx::CBitFileWriter writer(file.get());
        chunks.writeBitsTo(&writer, 0);
    }
    return file.bytes();
}

Bytes throughChunksAndBuffer(const Fields& fields, std::size_t sizeBytes) {
    Bytes bytes(sizeBytes);
    CBitChunkWriter chunks;
    test::writeFields(chunks, fields);
    CBitWriter writer(bytes.data(), sizeBytes);
    chunks.writeBitsTo(&writer, 0);
    writer.flush();
    return bytes;
}

/// Lengths in bits around the sizes of a file buffer, of a chunk and of two chunks.
std::vector<std::uint64_t> lengthsAroundBoundaries() {
    std::vector<std::uint64_t> lengths{1, 63, 64, 65};
    for (std::uint64_t boundary : {32768U, 262144U, 524288U})
        for (std::uint64_t past : {0U, 55U, 56U, 63U, 64U, 65U, 66U, 71U, 72U, 128U, 129U})
            lengths.push_back(boundary - 64 + past);
    return lengths;
}

TEST(SameBitsEverywhere, EveryWriterProducesTheBytesOfThePlainBits) {
    for (std::uint64_t length : lengthsAroundBoundaries()) {
        SCOPED_TRACE(length);
        const Fields fields = test::randomFields(length, length, 0, 64);
        const Bytes expected = test::packed(test::bitsOf(fields));
        EXPECT_TRUE(test::sameBytes(expected, throughBuffer(fields, expected.size())));
        EXPECT_TRUE(test::sameBytes(expected, throughLazyBlock(fields, expected.size())));
        EXPECT_TRUE(test::sameBytes(expected, throughFile(fields)));
        EXPECT_TRUE(test::sameBytes(expected, throughChunksAndFile(fields)));
        EXPECT_TRUE(test::sameBytes(expected, throughChunksAndBuffer(fields, expected.size())));
    }
}

TEST(SameBitsEverywhere, EveryWriterCountsTheSameAfterEveryField) {
    const Fields fields = test::randomFields(600000, 5, 0, 64);
    Bytes bytes(75000);
    const test::ScratchFile file;
    CBitWriter buffer(bytes.data(), bytes.size());
    qmx::CBitLazyWriter lazy(bytes.size(), true);
    qmx::CBitFileWriter onDisk(file.get());
    CBitChunkWriter chunks;
    CBitWriter* const writers[] = {&buffer, &lazy, &onDisk, &chunks};
    std::uint64_t count = 0;
    for (const Field& field : fields) {
        count += static_cast<std::uint64_t>(field.width);
        for (CBitWriter* writer : writers) {
            writer->writeInt(field.value, field.width);
            ASSERT_EQ(writer->getTotal(), count) << writer->getType();
        }
    }
}

TEST(SameBitsEverywhere, EveryReaderDeliversTheFieldsThatWereWritten) {
    for (std::uint64_t length : lengthsAroundBoundaries()) {
        const Fields fields = test::randomFields(length, length, 1, 63);
        const Bytes bytes = throughBuffer(fields, (length + 7) / 8);
        const test::ScratchFile file(bytes);
        qmx::CBitReader memory(bytes.data(), bytes.size());
        qmx::CBitFileReader onDisk(file.get());
        qmx::CBitInfiniteReader infinite;
        qmx::CBitInfiniteReader infiniteOnDisk;
        infinite.create(&memory, 0);
        infiniteOnDisk.create(&onDisk, 0);
        qmx::CBitReader* const readers[] = {&memory, &onDisk, &infinite, &infiniteOnDisk};
        for (const Field& field : fields)
            for (qmx::CBitReader* reader : readers)
                ASSERT_EQ(reader->readInt(field.width), field.value & qmx::lowBits(field.width));
    }
}

/// A writer whose space is a list of pieces, all of the same small size.
class PieceWriter final : public CBitWriter {
public:
    explicit PieceWriter(std::size_t sizeBytes) : CBitWriter(nullptr, 0), pieceBytes(sizeBytes) {}
    std::uint64_t getTotal() const override { return bitsBefore + CBitWriter::getTotal(); }
    void flushBuffer() override {
        if (!pieces.empty()) bitsBefore += 8 * pieceBytes;
        buffer = pieces.emplace_back(pieceBytes).data();
        bufferWords = static_cast<std::int64_t>(pieceBytes / 8);
        tailBytes = static_cast<std::uint32_t>(pieceBytes % 8);
        cursor = 0;
    }
    Bytes joined() const {
        Bytes bytes;
        for (const Bytes& piece : pieces)
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        return bytes;
    }

private:
    std::size_t pieceBytes;
    std::uint64_t bitsBefore = 0;
    std::vector<Bytes> pieces;
};

TEST(SameBitsEverywhere, SpaceMayComeInPiecesOfAnySize) {
    for (std::size_t size = 1; size <= 40; ++size) {
        SCOPED_TRACE(size);
        PieceWriter writer(size);
        const Fields fields = test::randomFields(3000 + size, size, 0, 64);
        std::uint64_t count = 0;
        for (const Field& field : fields) {
            writer.writeInt(field.value, field.width);
            count += static_cast<std::uint64_t>(field.width);
            ASSERT_EQ(writer.getTotal(), count);
        }
        writer.flush();
        const Bytes bytes = writer.joined();
        EXPECT_TRUE(test::sameBytes(test::packed(test::bitsOf(fields), bytes.size()), bytes));
    }
}

/// Copies bits out of chunks into a small buffer in which some bits stand already.
class CopyIntoSmallBuffer : public testing::TestWithParam<std::size_t> {
protected:
    CopyIntoSmallBuffer() : bits(test::randomBits(400, 99)) { test::writeBits(chunks, bits); }

    /// Expects what writing the bits one by one leaves behind.
    void expectLikeSingleBits(std::size_t filled, std::size_t count) {
        Bytes single(GetParam(), 0xEE);
        CBitWriter bitByBit(single.data(), single.size());
        const int thrownBySingle = test::thrownBy([&] {
            test::writeBits(bitByBit, Bits(filled, true));
            for (std::size_t i = 0; i < count; ++i)
                bitByBit.writeBit(bits[i] ? 1 : 0);
        });
        bitByBit.flush();
        Bytes copied(GetParam(), 0xEE);
        CBitWriter destination(copied.data(), copied.size());
        const int thrown = test::thrownBy([&] {
            test::writeBits(destination, Bits(filled, true));
            EXPECT_EQ(chunks.writeBitsTo(&destination, count), count);
        });
        destination.flush();
        ASSERT_EQ(thrown, filled + count > 8 * GetParam() ? qmx::kThrownEndOfStream : 0);
        ASSERT_EQ(thrown, thrownBySingle);
        ASSERT_EQ(destination.getTotal(), std::min(filled + count, 8 * GetParam()));
        ASSERT_EQ(destination.getTotal(), bitByBit.getTotal());
        ASSERT_TRUE(test::sameBytes(single, copied)) << filled << " + " << count;
    }

    Bits bits;
    CBitChunkWriter chunks;
};

TEST_P(CopyIntoSmallBuffer, AnyShortageBehindAnyFillLeavesTheSameBytes) {
    const std::size_t room = 8 * GetParam();
    for (std::size_t filled = 0; filled < 64 && filled <= room; ++filled)
        for (std::size_t count = room - filled; count <= room - filled + 130; ++count)
            if (count != 0) expectLikeSingleBits(filled, count);
}

TEST_P(CopyIntoSmallBuffer, AnyLengthThatFitsBehindAnyFillLeavesTheSameBytes) {
    const std::size_t room = 8 * GetParam();
    for (std::size_t filled = 0; filled < 64 && filled < room; ++filled)
        for (std::size_t count = 1; filled + count < room; count += 1 + count % 3)
            expectLikeSingleBits(filled, count);
}

INSTANTIATE_TEST_SUITE_P(Bytes, CopyIntoSmallBuffer,
                         testing::Values(0, 1, 5, 7, 8, 9, 13, 16, 17, 18, 19, 20, 21, 22, 23, 24),
                         testing::PrintToStringParamName());

}  // namespace
