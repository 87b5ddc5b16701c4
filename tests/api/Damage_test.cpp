// Cut and damaged streams through every decoder there is: the drivers behind `d` and `D`, the object
// behind `dc`, and the C interface, twice with memory that was filled differently before.

#include <gtest/gtest.h>

#include "api/CTeskDecompressor.h"
#include "support/CodecCalls.h"
#include "support/DriverAgreement.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;

#if defined(__SANITIZE_ADDRESS__) || defined(__clang__)
// A sanitizer makes each decode ten times slower, and one full run of a check is enough: every 9th
// length, a tenth of the flips.
constexpr std::size_t kLengthStep = 9;
constexpr int kFlips = 10000;
#else
constexpr std::size_t kLengthStep = 1;
constexpr int kFlips = 100000;
#endif
constexpr int kShards = 8;

/// Hooks that fill all memory with one byte, so that what is not written shows.
tesk_options filledWith(unsigned char& filler) {
    tesk_options options = TESK_OPTIONS_INIT;
    options.allocate = [](void* user, std::size_t size) {
        void* memory = std::malloc(size);
        if (memory != nullptr) std::memset(memory, *static_cast<unsigned char*>(user), size);
        return memory;
    };
    options.release = [](void*, void* memory) { std::free(memory); };
    options.user = &filler;
    return options;
}

/// Returns: 54 complete streams of all sample types, a few hundred to two thousand bytes each.
const std::vector<Bytes>& streams() {
    static const std::vector<Bytes> all = [] {
        constexpr Content kContents[] = {Content::photo, Content::noise, Content::sparse};
        std::vector<Bytes> made;
        for (const Content content : kContents) {
            const int shift = static_cast<int>(content);
            for (const RawImage& image :
                 test::imagesOf(content, {{8, 8 + shift}, {16, 17 - shift}, {20 + shift, 13}}))
                made.push_back(test::encode(image));
        }
        return made;
    }();
    return all;
}

struct Counts {
    int complete = 0;
    int cut = 0;
    int invalid = 0;
};

class Damage : public testing::TestWithParam<int> {
protected:
    /// Decodes in every way and compares.
    void expectOneAnswer(const Bytes& stream) {
        const test::Call zeros = test::decompressCall(codecOfZeros.get(), stream);
        const test::Call others = test::decompressCall(codecOfOthers.get(), stream);
        ASSERT_EQ(zeros.status, others.status);
        ASSERT_TRUE(test::sameBytes(zeros.bytes, others.bytes)) << "depends on old memory";
        count(zeros.status);
        expectObject(stream, zeros);
        if (stream[4] != 2 || stream[5] != 12) expectDrivers(stream, zeros);
    }

    void expectDrivers(const Bytes& stream, const test::Call& expected) {
        for (const bool upper : {false, true}) {
            const test::Outcome driver = test::decompressHere(stream, upper);
            ASSERT_EQ(driver.status, expected.isUsable() ? 0 : 1);
            ASSERT_TRUE(test::sameBytes(expected.bytes, driver.bytes));
        }
    }

    void expectObject(const Bytes& stream, const test::Call& expected) {
        qmx::CTeskDecompressor decompressor(stream.data(), stream.size());
        Bytes pixels(test::rawBytes(stream));
        const int result = decompressor.decompress(pixels.data(), pixels.size());
        ASSERT_EQ(result, resultOf(stream, expected.status));
        if (!expected.isUsable()) pixels.clear();
        // Nothing but a header is an early end for the C interface and no stream for the object.
        if (stream.size() == test::kHeaderBytes) return;
        ASSERT_TRUE(test::sameBytes(expected.bytes, pixels));
    }

    static int resultOf(const Bytes& stream, tesk_status status) {
        if (stream.size() == test::kHeaderBytes) return qmx::kInvalidSection;
        if (status == TESK_OK) return qmx::kComplete;
        return status == TESK_CUT ? qmx::kCut : qmx::kInvalidSection;
    }

    void count(tesk_status status) {
        ASSERT_TRUE(status == TESK_OK || status == TESK_CUT || status == TESK_INVALID_STREAM);
        ++(status == TESK_OK ? counts.complete : status == TESK_CUT ? counts.cut : counts.invalid);
    }

    void TearDown() override {
        std::printf("complete %d, cut %d, invalid %d\n", counts.complete, counts.cut,
                    counts.invalid);
    }

    Counts counts;

private:
    unsigned char fillers[2] = {0x00, 0xA5};
    tesk_options ofZeros = filledWith(fillers[0]);
    tesk_options ofOthers = filledWith(fillers[1]);
    test::Codec codecOfZeros = test::makeCodec(&ofZeros);
    test::Codec codecOfOthers = test::makeCodec(&ofOthers);
};

TEST_P(Damage, EveryLengthOfAStreamDecodesAlikeEverywhere) {
    for (std::size_t i = static_cast<std::size_t>(GetParam()); i < streams().size(); i += kShards) {
        const Bytes& stream = streams()[i];
        for (std::size_t size = test::kHeaderBytes; size <= stream.size(); size += kLengthStep) {
            SCOPED_TRACE("stream " + std::to_string(i) + ", " + std::to_string(size) + " bytes");
            expectOneAnswer({stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)});
            if (HasFatalFailure()) return;
        }
    }
    EXPECT_GT(counts.cut, 100);
}

TEST_P(Damage, FlippedBitsDecodeAlikeEverywhere) {
    test::Random random(static_cast<std::uint64_t>(GetParam()) + 77);
    for (int flip = 0; flip < kFlips / kShards; ++flip) {
        Bytes stream = streams()[random.below(streams().size())];
        // The declared bits, or any bit of the coefficient stream.
        const std::uint64_t place = random.below(stream.size() - test::kHeaderBytes + 1);
        const std::size_t byte = place == 0 ? 5 : test::kHeaderBytes + place - 1;
        stream[byte] ^= static_cast<unsigned char>(1U << random.below(8));
        SCOPED_TRACE("flip " + std::to_string(flip));
        expectOneAnswer(stream);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(counts.complete, 0);
    EXPECT_GT(counts.cut, 0);
    EXPECT_GT(counts.invalid, 0);
}

INSTANTIATE_TEST_SUITE_P(Shards, Damage, testing::Range(0, kShards));

}  // namespace
