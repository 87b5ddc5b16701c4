#include "bitstream/CBitDecoder.h"

#include <gtest/gtest.h>

#include "bitstream/BitTestSupport.h"
#include "bitstream/CBitEncoder.h"
#include "bitstream/CBitInfiniteReader.h"
#include "bitstream/Status.h"

namespace {

using qmx::CBitDecoder;
using test::Bits;
using test::Bytes;

constexpr std::uint64_t kEnd = (std::uint64_t{1} << 30) + 1;

/// Returns: bits from a text of 0 and 1; E stands for an escape, Z for the zeros of an end.
Bits bitsFrom(const std::string& text) {
    Bits bits;
    for (char letter : text) {
        if (letter == 'E') bits.resize(bits.size() + 40, false);
        if (letter == 'Z') bits.resize(bits.size() + 41, false);
        if (letter != 'Z' && letter != ' ') bits.push_back(letter != '0');
    }
    return bits;
}

/// A decoder at the start of the given bits, behind which zeros follow for ever.
struct Decoding {
    explicit Decoding(const std::string& text)
        : bytes(test::packed(bitsFrom(text))), source(bytes.data(), bytes.size()) {
        reader.create(&source, 0);
        decoder.attach(&reader);
    }
    void expect(std::uint64_t run, std::uint64_t total, std::uint64_t stored, bool terminated) {
        EXPECT_EQ(decoder.getRun(), run);
        EXPECT_EQ(decoder.getTotal(), total);
        EXPECT_EQ(decoder.getStoredTotal(), stored);
        EXPECT_EQ(decoder.isTerminated(), terminated);
    }
    /// Reads the next run code as the caller does who has met the one bit.
    void next() {
        decoder.setRun(0);
        decoder.readRun();
    }

    Bytes bytes;
    qmx::CBitReader source;
    qmx::CBitInfiniteReader reader;
    CBitDecoder decoder;
};

/// Encodes the runs and expects them back, with the counts of both sides after each.
void expectRoundTrip(const std::vector<std::uint64_t>& runs) {
    qmx::CBitChunkEncoder encoder;
    for (std::uint64_t run : runs)
        encoder.encodeOne(run);
    Bytes bytes((encoder.getStoredTotal() + 7) / 8);
    qmx::CBitWriter writer(bytes.data(), bytes.size());
    encoder.writer().writeBitsTo(&writer, 0);
    writer.flush();
    qmx::CBitReader source(bytes.data(), bytes.size());
    CBitDecoder decoder;
    decoder.attach(&source);
    std::uint64_t total = 0;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        ASSERT_EQ(decoder.getRun(), runs[i]);
        ASSERT_EQ(decoder.getTotal(), total);
        total += runs[i] + 1;
        decoder.setRun(0);
        ASSERT_EQ(decoder.getTotal(), total - 1);
        if (i + 1 < runs.size()) decoder.readRun();
    }
    EXPECT_FALSE(decoder.isTerminated());
    EXPECT_EQ(decoder.getStoredTotal(), encoder.getStoredTotal());
}

TEST(CBitDecoder, DeliversAllRunsUpToFiveThousand) {
    std::vector<std::uint64_t> runs;
    for (std::uint64_t run = 0; run <= 5000; ++run)
        runs.push_back(run);
    expectRoundTrip(runs);
}

TEST(CBitDecoder, DeliversRunsAroundPowersOfTwo) {
    std::vector<std::uint64_t> runs;
    for (int power = 0; power <= 38; ++power)
        for (std::uint64_t step : {0U, 1U, 2U})
            runs.push_back((std::uint64_t{1} << power) - 1 + step);
    runs.push_back((std::uint64_t{1} << 39) - 1);
    expectRoundTrip(runs);
}

TEST(CBitDecoder, DeliversRandomRuns) {
    test::Random random(6);
    std::vector<std::uint64_t> runs;
    for (int i = 0; i < 20000; ++i)
        runs.push_back(random.next() >> 15 >> random.below(38));
    expectRoundTrip(runs);
}

TEST(CBitDecoder, BeforeTheFirstAttachThereIsNothing) {
    const CBitDecoder decoder;
    EXPECT_EQ(decoder.getRun(), 0U);
    EXPECT_EQ(decoder.getTotal(), std::uint64_t{0} - 1);
    EXPECT_EQ(decoder.getStoredTotal(), 0U);
    EXPECT_FALSE(decoder.isTerminated());
}

TEST(CBitDecoder, HasDeliveredNothingAfterTheFirstRunCode) {
    Decoding("1").expect(0, 0, 1, false);
    Decoding("01").expect(1, 0, 2, false);
    Decoding("0010").expect(2, 0, 4, false);
    Decoding("0011").expect(3, 0, 4, false);
    Decoding("000100").expect(4, 0, 6, false);
    Decoding("00000001001001").expect(100, 0, 14, false);
}

TEST(CBitDecoder, CountsTheZerosThatWereDelivered) {
    Decoding decoding("0011");
    decoding.decoder.setRun(2);
    EXPECT_EQ(decoding.decoder.getTotal(), 1U);
    decoding.decoder.setRun(0);
    EXPECT_EQ(decoding.decoder.getTotal(), 3U);
}

TEST(CBitDecoder, RawBitsStandBetweenTheCodes) {
    Decoding decoding("01 1 0011 0 1");
    decoding.expect(1, 0, 2, false);
    EXPECT_EQ(decoding.decoder.readRawBit(), 1U);
    decoding.next();
    decoding.expect(3, 2, 7, false);
    EXPECT_EQ(decoding.decoder.readRawBit(), 0U);
    decoding.next();
    decoding.expect(0, 6, 9, false);
}

TEST(CBitDecoder, FortyOneZerosAreTheEnd) {
    Decoding decoding("Z1");
    decoding.expect(kEnd, 0, 41, false);
    decoding.next();
    decoding.expect(0, kEnd + 1, 42, false);
}

TEST(CBitDecoder, StreamOfZerosIsOneEndAfterTheOther) {
    qmx::CBitInfiniteReader zeros;
    CBitDecoder decoder;
    decoder.attach(&zeros);
    EXPECT_EQ(decoder.getRun(), kEnd);
    EXPECT_EQ(decoder.getTotal(), 0U);
    EXPECT_EQ(decoder.getStoredTotal(), 41U);
    for (std::uint64_t i = 1; i < 200; ++i) {
        decoder.setRun(0);
        decoder.readRun();
        EXPECT_EQ(decoder.getRun(), kEnd);
        EXPECT_EQ(decoder.getTotal(), i * (kEnd + 1));
        EXPECT_FALSE(decoder.isTerminated());
    }
}

TEST(CBitDecoder, EndAfterOtherRunsCountsThem) {
    Decoding decoding("01 Z");
    decoding.next();
    decoding.expect(kEnd, 2, 43, false);
}

TEST(CBitDecoder, ThirtyNineZerosAreAnOrdinaryRun) {
    Decoding decoding(std::string(39, '0') + '1' + std::string(37, '0') + '1');
    decoding.expect((std::uint64_t{1} << 38) + (std::uint64_t{1} << 37), 0, 78, false);
}

TEST(CBitDecoder, EscapeTerminatesAndTheNextCodeIsTheRun) {
    Decoding("E1").expect(0, 0, 42, true);
    Decoding("E01").expect(1, 0, 43, true);
    Decoding("E0011").expect(3, 0, 45, true);
    Decoding("E00000001001001").expect(100, 0, 55, true);
}

TEST(CBitDecoder, EndBehindAnEscapeIsTheEnd) {
    Decoding decoding("E Z 01");
    decoding.expect(kEnd, 0, 82, true);
    decoding.next();
    decoding.expect(1, kEnd + 1, 84, true);
}

TEST(CBitDecoder, EscapeBehindAnEscapeIsARunOfFortyOneThatIsNotCounted) {  // Quirk 3
    Decoding decoding("E E 01");
    // Nothing was added to the symbols, so the count is 41 below the one that stands for nothing.
    decoding.expect(41, std::uint64_t{0} - 42, 82, true);
    decoding.next();
    decoding.expect(1, 0, 84, true);
}

TEST(CBitDecoder, EscapeOnATerminatedDecoderIsARunOfFortyOne) {
    Decoding decoding("E01 E 0011 E");
    decoding.next();
    decoding.expect(41, std::uint64_t{2} - 42, 84, true);
    decoding.next();
    decoding.expect(3, 2, 88, true);
    decoding.next();
    decoding.expect(41, std::uint64_t{6} - 42, 129, true);
}

TEST(CBitDecoder, EndOnATerminatedDecoderIsTheEnd) {
    Decoding decoding("E01 Z");
    decoding.next();
    decoding.expect(kEnd, 2, 84, true);
}

TEST(CBitDecoder, EscapeAfterOtherRunsCountsThem) {
    Decoding decoding("0011 E 01");
    decoding.next();
    decoding.expect(1, 4, 47, true);
}

TEST(CBitDecoder, AttachStartsAfresh) {
    Decoding decoding("E01");
    const Bytes bytes{0x0C};
    qmx::CBitReader other(bytes.data(), bytes.size());
    decoding.decoder.attach(&other);
    decoding.expect(3, 0, 4, false);
}

TEST(CBitDecoder, PassesOnWhatTheReaderThrows) {
    const Bytes bytes{0x01};
    qmx::CBitReader source(bytes.data(), bytes.size());
    CBitDecoder decoder;
    decoder.attach(&source);
    EXPECT_EQ(decoder.getRun(), 0U);
    EXPECT_EQ(test::thrownBy([&] { decoder.readRun(); }), qmx::kThrownEndOfStream);
    EXPECT_EQ(test::thrownBy([&] { decoder.readRawBit(); }), qmx::kThrownEndOfStream);
    qmx::CBitReader empty(nullptr, 0);
    EXPECT_EQ(test::thrownBy([&] { decoder.attach(&empty); }), qmx::kThrownEndOfStream);
}

}  // namespace
