#include "bitstream/CBitChunks.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/ByteBatch.h"
#include "bitstream/Status.h"
#include "support/GuardedHeap.h"

namespace {

using qmx::BitBatch;
using qmx::ByteBatch;
using qmx::CBitChunks;
using qmx::CBitWriter;
using qmx::CMemoryPool;
using test::Bits;
using test::Bytes;

constexpr int kFirstWords = 16;
constexpr std::uint64_t kFirstBits = 64 * kFirstWords;

/// Bits that are appended in chunks of a heap with guard pages.
template <class Batch>
struct Section {
    void append(std::uint64_t value, std::uint64_t nbits) { batch.append(value, nbits); }
    void makeRoom() {
        if (batch.isFull()) chunks.makeRoom(batch, kFirstWords, pool);
    }
    Bytes bytes() const {
        Bytes result((chunks.total(batch) + 7) / 8);
        CBitWriter out(result.data(), result.size());
        chunks.writeTo(out, batch);
        EXPECT_EQ(out.getTotal(), chunks.total(batch));
        out.flush();
        return result;
    }

    test::GuardedHeap heap{test::Side::atEnd};
    CMemoryPool pool{&heap};
    CBitChunks chunks{};
    Batch batch{};
};

/// Appends as many fields as the slack has words between two looks at the room.
template <class Batch>
void expectTheBitsOfTheFields(int widestField) {
    for (std::uint64_t past = 0; past < 140; ++past) {
        const auto fields = test::randomFields(7 * kFirstBits - 70 + past, past, 1, widestField);
        Section<Batch> section;
        for (std::size_t i = 0; i < fields.size(); ++i) {
            if (i % qmx::kSlackWords == 0) section.makeRoom();
            const int width = fields[i].width;
            const std::uint64_t mask = width == 64 ? ~std::uint64_t{0} : qmx::lowBits(width);
            section.append(fields[i].value & mask, static_cast<std::uint64_t>(width));
        }
        const Bits bits = test::bitsOf(fields);
        ASSERT_EQ(section.chunks.total(section.batch), bits.size());
        ASSERT_TRUE(test::sameBytes(test::packed(bits), section.bytes())) << past;
    }
}

TEST(CBitChunks, HoldTheBitsOfAllAppends) {
    expectTheBitsOfTheFields<BitBatch>(64);
    expectTheBitsOfTheFields<ByteBatch>(ByteBatch::kMaxBits);
}

/// Fills the first chunk to its last bit but `missing`, and then appends steps of nbits, as many as the slack
/// takes or fewer; then makes room and goes on, or not.
template <class Batch>
void expectSlackIsKept(std::uint64_t missing, std::uint64_t nbits, bool goesOn) {
    for (std::uint64_t appends = 0; appends <= qmx::kSlackWords; ++appends) {
        const Bits bits =
            test::randomBits(kFirstBits - missing + nbits * appends + (goesOn ? 1 : 0), appends);
        Section<Batch> section;
        section.makeRoom();
        for (std::uint64_t i = 0; i < kFirstBits - missing; ++i)
            section.append(test::valueAt(bits, i, 1), 1);
        std::uint64_t next = kFirstBits - missing;
        for (std::uint64_t i = 0; i < appends; ++i, next += nbits)
            section.append(test::valueAt(bits, next, static_cast<int>(nbits)), nbits);
        if (goesOn) {
            section.makeRoom();
            section.append(test::valueAt(bits, next, 1), 1);
        }
        EXPECT_TRUE(test::sameBytes(test::packed(bits), section.bytes())) << appends;
    }
}

TEST(CBitChunks, WhatStandsInTheSlackIsWrittenAndMovesToTheNextChunk) {
    for (const bool goesOn : {false, true}) {
        expectSlackIsKept<BitBatch>(1, 64, goesOn);
        expectSlackIsKept<BitBatch>(64, 64, goesOn);
        expectSlackIsKept<ByteBatch>(1, ByteBatch::kMaxBits, goesOn);
    }
}

TEST(CBitChunks, NoneAreNoBits) {
    const Section<BitBatch> section;
    EXPECT_EQ(section.chunks.total(section.batch), 0U);
    EXPECT_TRUE(section.bytes().empty());
}

TEST(CBitChunks, WhatDoesNotFitFillsTheDestinationToItsLastBit) {
    const Bits bits = test::randomBits(3 * kFirstBits + 500, 6);
    Section<BitBatch> section;
    for (std::uint64_t i = 0; i < bits.size(); i += 4) {
        section.makeRoom();
        section.append(test::valueAt(bits, i, 4), 4);
    }
    for (std::size_t size : {0U, 1U, 8U, 13U, 127U, 128U, 129U, 400U}) {
        Bytes bytes(size);
        CBitWriter out(bytes.data(), size);
        EXPECT_EQ(test::thrownBy([&] { section.chunks.writeTo(out, section.batch); }),
                  qmx::kThrownEndOfStream);
        EXPECT_EQ(out.getTotal(), 8 * size);
        EXPECT_TRUE(test::sameBytes(test::packed(bits, size), bytes)) << size;
    }
}

}  // namespace
