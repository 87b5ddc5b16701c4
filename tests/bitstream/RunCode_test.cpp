#include "bitstream/RunCode.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitChunkWriter.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitReader;
using test::Bits;
using test::Bytes;

/// Returns: the code of a run as a string of 0 and 1, first bit first.
std::string codeOf(std::uint64_t run, int k = qmx::kRunParameter) {
    Bytes bytes(16);
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    qmx::writeRunCode(writer, run, k);
    writer.flush();
    CBitReader reader(bytes.data(), bytes.size());
    std::string code;
    while (code.size() < writer.getTotal())
        code += reader.readBit() == 0 ? '0' : '1';
    return code;
}

TEST(RunCode, BitsOfShortRuns) {
    const char* const codes[] = {"1",      "01",     "0010",   "0011",    "000100",
                                 "000110", "000101", "000111", "00001000"};
    for (std::uint64_t run = 0; run < std::size(codes); ++run)
        EXPECT_EQ(codeOf(run), codes[run]) << "run " << run;
    EXPECT_EQ(codeOf(100), "00000001001001");
}

TEST(RunCode, BitsOfTheLongestRuns) {
    const std::string zeros(39, '0');
    EXPECT_EQ(codeOf(std::uint64_t{1} << 38), zeros + '1' + std::string(38, '0'));
    EXPECT_EQ(codeOf((std::uint64_t{1} << 39) - 1), zeros + '1' + std::string(38, '1'));
}

TEST(RunCode, CodeIsTheRunBehindAsManyZerosAsItHasBits) {
    for (std::uint64_t run = 1; run < 5000; ++run) {
        std::string expected(static_cast<std::size_t>(qmx::bitLength(run)), '0');
        expected += '1';
        for (int i = 0; i + 1 < qmx::bitLength(run); ++i)
            expected += (run >> i & 1) == 0 ? '0' : '1';
        ASSERT_EQ(codeOf(run), expected) << "run " << run;
    }
}

TEST(RunCode, OtherParametersCodeRunsUpToThemInUnary) {
    EXPECT_EQ(codeOf(0, 0), "1");
    EXPECT_EQ(codeOf(1, 0), "010");
    EXPECT_EQ(codeOf(2, 0), "011");
    EXPECT_EQ(codeOf(3, 3), "0001");
    EXPECT_EQ(codeOf(4, 3), "000010");
    EXPECT_EQ(codeOf(5, 3), "000011");
    EXPECT_EQ(codeOf(6, 3), "00000100");
}

TEST(RunCode, TheLengthOfACodeIsKnownWithoutWritingIt) {
    for (const int k : {0, 1, 5})
        for (const std::uint64_t run : {0ULL, 1ULL, 2ULL, 3ULL, 5ULL, 6ULL, 7ULL, 8ULL, 100ULL,
                                        (1ULL << 30) + 1, (1ULL << 39) - 1}) {
            qmx::CBitChunkWriter writer;
            writeRunCode(writer, run, k);
            EXPECT_EQ(qmx::runCodeBits(run, k), writer.getTotal()) << run << ", " << k;
        }
}

TEST(RunCode, ZerosAndSuffixGiveTheRunBack) {
    for (int k : {0, 1, 2, 5})
        for (std::uint64_t run = static_cast<std::uint64_t>(k) + 1; run < 3000; ++run) {
            const std::string code = codeOf(run, k);
            const int zeros = static_cast<int>(code.find('1'));
            std::uint64_t suffix = 0;
            for (int i = 0; i < qmx::suffixBits(zeros, k); ++i)
                suffix |= std::uint64_t{code[static_cast<std::size_t>(zeros + 1 + i)] == '1'} << i;
            ASSERT_EQ(qmx::runOf(zeros, suffix, k), run);
            ASSERT_EQ(code.size(), static_cast<std::size_t>(2 * zeros - k + 1));
        }
}

TEST(RunCode, CodeThatDoesNotFitThrows) {
    Bytes bytes(1, 0xFF);
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    const int thrown = test::thrownBy([&] { qmx::writeRunCode(writer, 100, 1); });
    EXPECT_EQ(thrown, qmx::kThrownEndOfStream);
    EXPECT_EQ(writer.getTotal(), 8U);
    EXPECT_EQ(bytes[0], 0x80);
}

/// Returns: `start` one bits, `zeros` zero bits, a one bit and the bits 011.
Bytes zeroRunBehindOnes(int start, int zeros) {
    Bits bits(static_cast<std::size_t>(start), true);
    bits.resize(bits.size() + static_cast<std::size_t>(zeros), false);
    bits.insert(bits.end(), {true, false, true, true});
    return test::packed(bits);
}

TEST(CountZeros, TakesTheZerosAndTheOneBitBehindThem) {
    for (int start = 0; start < 130; ++start)
        for (int zeros = 0; zeros <= 140; ++zeros) {
            const Bytes bytes = zeroRunBehindOnes(start, zeros);
            CBitReader reader(bytes.data(), bytes.size());
            reader.skip(static_cast<std::uint64_t>(start));
            ASSERT_EQ(reader.countZeros(1000), zeros) << "from bit " << start;
            ASSERT_EQ(reader.getTotal(), static_cast<std::uint64_t>(start + zeros + 1));
            ASSERT_EQ(reader.readInt(3), 6U);
        }
}

TEST(CountZeros, StopsExactlyAtItsLimitWithoutTheOneBit) {
    for (int start = 0; start < 130; ++start)
        for (int zeros = 0; zeros <= 80; ++zeros)
            for (int limit : {zeros, zeros / 2}) {
                const Bytes bytes = zeroRunBehindOnes(start, zeros);
                CBitReader reader(bytes.data(), bytes.size());
                reader.skip(static_cast<std::uint64_t>(start));
                ASSERT_EQ(reader.countZeros(limit), limit);
                ASSERT_EQ(reader.getTotal(), static_cast<std::uint64_t>(start + limit));
                ASSERT_EQ(reader.countZeros(1000), zeros - limit);
            }
}

TEST(CountZeros, LimitOneBeyondTheZerosTakesTheOneBit) {
    for (int start = 0; start < 130; ++start)
        for (int zeros = 0; zeros <= 80; ++zeros) {
            const Bytes bytes = zeroRunBehindOnes(start, zeros);
            CBitReader reader(bytes.data(), bytes.size());
            reader.skip(static_cast<std::uint64_t>(start));
            ASSERT_EQ(reader.countZeros(zeros + 1), zeros);
            ASSERT_EQ(reader.getTotal(), static_cast<std::uint64_t>(start + zeros + 1));
        }
}

TEST(CountZeros, LimitZeroTakesNothing) {
    CBitReader reader(nullptr, 0);
    EXPECT_EQ(reader.countZeros(0), 0);
    EXPECT_EQ(reader.getTotal(), 0U);
}

TEST(CountZeros, ThrowsWhenTheDataEndsBeforeTheLimit) {
    for (std::size_t size : {0U, 1U, 8U, 13U}) {
        const Bytes bytes(size);
        const int all = static_cast<int>(8 * size);
        CBitReader atTheEnd(bytes.data(), size);
        EXPECT_EQ(atTheEnd.countZeros(all), all);
        CBitReader beyond(bytes.data(), size);
        EXPECT_EQ(test::thrownBy([&] { beyond.countZeros(all + 1); }), qmx::kThrownEndOfStream);
    }
}

}  // namespace
