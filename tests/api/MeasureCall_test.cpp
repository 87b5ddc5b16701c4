#include <filesystem>
#include <gtest/gtest.h>

#include "support/CodecCalls.h"
#include "support/GuardedBuffer.h"
#include "support/LibraryCodec.h"
#include "support/StreamBuilder.h"

// Where streams end: always as tesk_decompress says.

namespace {

using test::Bytes;
using test::Content;

struct Measured {
    tesk_status status;
    std::size_t length;

    bool operator==(const Measured&) const = default;
    friend std::ostream& operator<<(std::ostream& out, const Measured& measured) {
        return out << tesk_status_message(measured.status) << ", " << measured.length << " bytes";
    }
};

/// Measures the first sizeBytes bytes of a stream.
Measured measure(const Bytes& stream, std::size_t sizeBytes) {
    const unsigned char nothing = 0;
    std::size_t length = 99;
    const tesk_status status =
        tesk_measure(stream.empty() ? &nothing : stream.data(), sizeBytes, &length);
    return {status, length};
}

Measured measure(const Bytes& stream) {
    return measure(stream, stream.size());
}

Bytes joined(const Bytes& first, const Bytes& second) {
    Bytes both = first;
    both.insert(both.end(), second.begin(), second.end());
    return both;
}

/// Complete streams of all sample types, plain and rescued.
const std::vector<Bytes>& streams() {
    static const std::vector<Bytes> all = [] {
        const test::Codec codec = test::makeCodec();
        std::vector<Bytes> made;
        for (const Content content : {Content::noise, Content::photo, Content::flat})
            for (const auto& image :
                 test::imagesOf(content, {{5, 5}, {3, 20}, {16, 17}, {70, 9}, {40, 66}, {0, 4}}))
                made.push_back(test::compressCall(codec.get(), image).bytes);
        return made;
    }();
    return all;
}

class Measure : public testing::Test {
protected:
    /// Returns: what tesk_decompress says. Streams say how large their images are.
    tesk_status decompress(const Bytes& stream) const {
        if (stream.empty()) return TESK_INVALID_STREAM;  // null otherwise, which is another answer
        return static_cast<tesk_status>(test::decompressCall(codec.get(), stream).status);
    }
    void expectAgreement(const Bytes& stream) {
        const Measured measured = measure(stream);
        EXPECT_EQ(measured.status, decompress(stream));
        const bool isUsable = measured.status == TESK_OK || measured.status == TESK_CUT;
        EXPECT_LE(measured.length, isUsable ? stream.size() : 0);
        EXPECT_TRUE(measured.status != TESK_CUT || measured.length == stream.size());
        ++counts[measured.status];
    }

    test::Codec codec = test::makeCodec();
    int counts[TESK_NOT_RESTORABLE + 1]{};
};

TEST_F(Measure, StreamsOfEncodersEndWithTheirLastByte) {
    ASSERT_EQ(streams().size(), 3U * 6 * 6);
    for (const Bytes& stream : streams())
        EXPECT_EQ(measure(stream), (Measured{TESK_OK, stream.size()}));
}

TEST_F(Measure, WhatFollowsIsNotPartOfAStream) {
    test::Random random(5);
    for (const Bytes& stream : streams()) {
        const Measured expected{TESK_OK, stream.size()};
        for (const unsigned char filler : Bytes{0x00, 0x03, 0xFF})
            for (const std::size_t count : {1U, 2U, 3U, 8U, 100U})
                EXPECT_EQ(measure(joined(stream, Bytes(count, filler))), expected);
        Bytes noise(40);
        for (unsigned char& byte : noise)
            byte = static_cast<unsigned char>(random.next());
        EXPECT_EQ(measure(joined(stream, noise)), expected);
    }
}

TEST_F(Measure, StreamsBehindEachOtherAreFoundOneAfterTheOther) {
    Bytes all;
    for (const Bytes& stream : streams())
        all.insert(all.end(), stream.begin(), stream.end());
    std::size_t place = 0;
    for (const Bytes& stream : streams()) {
        std::size_t length = 0;
        ASSERT_EQ(tesk_measure(all.data() + place, all.size() - place, &length), TESK_OK);
        ASSERT_EQ(length, stream.size());
        place += length;
    }
    EXPECT_EQ(place, all.size());
}

TEST_F(Measure, GoldenStreamsAreThoseOfTheDecoder) {
    int early = 0;
    for (const auto& file : std::filesystem::directory_iterator(TESK_GOLDEN_FOLDER)) {
        if (file.path().extension() != ".tk") continue;
        SCOPED_TRACE(file.path());
        const Bytes stream = test::readFile(file.path());
        expectAgreement(stream);
        const Measured measured = measure(stream);
        const bool endsEarly = measured.status == TESK_OK && measured.length != stream.size();
        // Behind a section that is too long decoders meet an end mark by chance.
        const bool hasLongSection =
            file.path().filename().string().find("_101x77.") != std::string::npos;
        EXPECT_TRUE(!endsEarly || hasLongSection);
        early += endsEarly ? 1 : 0;
    }
    EXPECT_EQ(early, 4);
    EXPECT_GT(counts[TESK_OK], 40);
    EXPECT_GT(counts[TESK_CUT], 20);
    EXPECT_GT(counts[TESK_INVALID_STREAM], 0);
}

TEST_F(Measure, EveryPrefixIsJudgedAsTheDecoderJudgesIt) {
    for (std::size_t i = 0; i < streams().size(); i += 5)
        for (std::size_t size = 0; size <= streams()[i].size(); ++size)
            expectAgreement(test::prefixOf(streams()[i], size));
    EXPECT_GT(counts[TESK_OK], 20);
    EXPECT_GT(counts[TESK_CUT], 1000);
    EXPECT_GT(counts[TESK_INVALID_STREAM], 100);
}

/// Behind the end mark are 9 bits of padding: one or two bytes that may be missing.
TEST_F(Measure, AStreamThatLacksPaddingIsAsLongAsItIs) {
    for (const Bytes& stream : streams()) {
        EXPECT_EQ(measure(stream, stream.size() - 1), (Measured{TESK_OK, stream.size() - 1}));
        EXPECT_EQ(decompress(test::prefixOf(stream, stream.size() - 1)), TESK_OK);
        const Measured shorter = measure(stream, stream.size() - 3);
        EXPECT_EQ(shorter, (Measured{TESK_CUT, stream.size() - 3}));
    }
}

TEST_F(Measure, DamagedStreamsAreJudgedAsTheDecoderJudgesThem) {
    test::Random random(2026);
    for (int round = 0; round < 1500; ++round) {
        Bytes stream = streams()[random.below(streams().size())];
        for (std::uint64_t flips = 1 + random.below(4); flips != 0; --flips)
            stream[test::kHeaderBytes + random.below(stream.size() - test::kHeaderBytes)] ^=
                static_cast<unsigned char>(1U << random.below(8));
        if (random.below(4) == 0) stream.resize(random.below(stream.size() + 1));
        if (random.below(4) == 0) stream.resize(stream.size() + random.below(20), 0x5A);
        expectAgreement(stream);
    }
    for (const int status : {TESK_OK, TESK_CUT, TESK_INVALID_STREAM})
        EXPECT_GT(counts[status], 50) << status;
}

TEST_F(Measure, DamagedHeadersAreJudgedAsTheDecoderJudgesThem) {
    for (std::size_t i = 0; i < streams().size(); i += 7)
        for (std::size_t bit = 0; bit < 8 * test::kHeaderBytes; ++bit) {
            // The high bits of the sides are megabytes of pixels.
            if (bit / 8 == 7 || bit / 8 == 9) continue;
            Bytes stream = streams()[i];
            stream[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
            expectAgreement(stream);
        }
    EXPECT_GT(counts[TESK_UNSUPPORTED_FORMAT], 10);
}

TEST_F(Measure, AForeignOrderWhoseLengthIsCutIsCut) {
    const qmx::TKHeader header = qmx::makeHeader(1, 8, 8, 8);
    // Order 7 reads 58 bits of length.
    Bytes stream = test::headed(header, {6, 7 << 2, 0, 0});
    EXPECT_EQ(measure(stream), (Measured{TESK_CUT, stream.size()}));
    expectAgreement(stream);
    stream.resize(stream.size() + 16);
    EXPECT_EQ(measure(stream), (Measured{TESK_INVALID_STREAM, 0}));
    expectAgreement(stream);
}

TEST_F(Measure, LengthsThatReachBeyondAllDataAreCut) {
    const qmx::TKHeader header = qmx::makeHeader(1, 8, 65535, 65535);
    test::StreamBuilder builder(65535, 65535, 7);
    const Bytes stream = test::headed(header, builder.header(0, 0, false, ~0U).cut());
    EXPECT_EQ(measure(stream), (Measured{TESK_CUT, stream.size()}));
}

TEST_F(Measure, NothingIsReadOutsideTheStream) {
    for (const Bytes& stream : streams())
        for (const std::size_t less : {0U, 1U, 2U, 5U}) {
            const std::size_t size = stream.size() - std::min<std::size_t>(less, stream.size());
            const test::GuardedBuffer<unsigned char> guarded(test::prefixOf(stream, size),
                                                             test::Side::atEnd);
            std::size_t length = 0;
            EXPECT_NE(tesk_measure(guarded.data(), size, &length), TESK_INVALID_ARGUMENT);
        }
}

TEST_F(Measure, WrongArgumentsAreRefused) {
    const Bytes& stream = streams().front();
    std::size_t length = 99;
    EXPECT_EQ(tesk_measure(stream.data(), stream.size(), nullptr), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(tesk_measure(nullptr, 0, &length), TESK_INVALID_ARGUMENT);
    EXPECT_EQ(length, 0U);
    EXPECT_EQ(measure({}), (Measured{TESK_INVALID_STREAM, 0}));
    EXPECT_EQ(measure(stream, 15), (Measured{TESK_INVALID_STREAM, 0}));
    EXPECT_EQ(measure(stream, 16), (Measured{TESK_CUT, 16}));
}

}  // namespace
