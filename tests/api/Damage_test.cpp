// Cut and damaged streams through every decoder. Each test prints what became of them.

#include <filesystem>
#include <gtest/gtest.h>
#include <set>

#include "support/EveryDecoder.h"

namespace {

using test::Bytes;
using test::Content;
using test::RawImage;

/// Without the full run: every 9th length and header bit, a tenth of the flips.
constexpr std::size_t kStep = test::kRunsInFull ? 1 : 9;
constexpr int kFlips = test::kRunsInFull ? 100000 : 10000;
constexpr int kShards = 8;

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

Bytes firstOf(const Bytes& stream, std::size_t size) {
    return {stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(size)};
}

/// Each shard takes every 8th stream.
class Damage : public testing::TestWithParam<int> {
protected:
    /// Calls work with each stream of the shard until a test has failed.
    template <class Work>
    static void forStreams(const std::vector<Bytes>& all, Work work) {
        for (std::size_t i = static_cast<std::size_t>(GetParam()); i < all.size(); i += kShards) {
            SCOPED_TRACE("stream " + std::to_string(i));
            work(all[i]);
            if (HasFatalFailure()) return;
        }
    }

    void expectOneAnswerForLength(const Bytes& stream, std::size_t size) {
        SCOPED_TRACE(std::to_string(size) + " bytes");
        decoders.expectOneAnswer(firstOf(stream, size));
    }

    test::EveryDecoder decoders;
};

TEST_P(Damage, EveryLengthOfAStreamDecodesAlikeEverywhere) {
    forStreams(streams(), [&](const Bytes& stream) {
        for (std::size_t size = 0; size <= stream.size() && !HasFatalFailure(); size += kStep)
            expectOneAnswerForLength(stream, size);
    });
    EXPECT_GT(decoders.counts.cut, 100);
    EXPECT_GT(decoders.counts.invalid, 5);
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
        decoders.expectOneAnswer(stream);
        if (HasFatalFailure()) return;
    }
    EXPECT_GT(decoders.counts.complete, 0);
    EXPECT_GT(decoders.counts.cut, 0);
    EXPECT_GT(decoders.counts.invalid, 0);
}

TEST_P(Damage, EveryFlippedBitOfAHeaderDecodesAlikeEverywhere) {
    forStreams(streams(), [&](const Bytes& stream) {
        for (std::size_t bit = 0; bit < 8 * test::kHeaderBytes; bit += kStep) {
            SCOPED_TRACE("bit " + std::to_string(bit));
            Bytes damaged = stream;
            damaged[bit / 8] ^= static_cast<unsigned char>(1U << bit % 8);
            decoders.expectOneAnswer(damaged);
            if (HasFatalFailure()) return;
        }
    });
    EXPECT_GT(decoders.counts.complete, 0);
    EXPECT_GT(decoders.counts.cut, 0);
    EXPECT_GT(decoders.counts.invalid, 0);
    EXPECT_GT(decoders.counts.unsupported, 0);
}

/// Returns: the complete golden streams, by name.
const std::vector<Bytes>& goldenStreams() {
    static const std::vector<Bytes> all = [] {
        std::set<std::string> names;
        for (const auto& file : std::filesystem::directory_iterator(TESK_GOLDEN_FOLDER))
            if (file.path().string().ends_with(".c.tk")) names.insert(file.path());
        std::vector<Bytes> read;
        for (const std::string& name : names)
            read.push_back(test::readFile(name));
        return read;
    }();
    return all;
}

TEST_P(Damage, LengthsOfGoldenStreamsDecodeAlikeEverywhere) {
    constexpr std::size_t kEveryLengthUpTo = 256;
    constexpr std::size_t kLongerLengths = 20;
    ASSERT_GT(goldenStreams().size(), 20U);
    forStreams(goldenStreams(), [&](const Bytes& stream) {
        const std::size_t few = std::min(stream.size(), kEveryLengthUpTo);
        for (std::size_t size = 0; size < few && !HasFatalFailure(); size += kStep)
            expectOneAnswerForLength(stream, size);
        for (std::size_t n = 0; n <= kLongerLengths && !HasFatalFailure(); ++n)
            expectOneAnswerForLength(stream, few + (stream.size() - few) * n / kLongerLengths);
    });
    EXPECT_GT(decoders.counts.complete, 0);
    EXPECT_GT(decoders.counts.cut, test::kRunsInFull ? 20 : 2);
}

INSTANTIATE_TEST_SUITE_P(Shards, Damage, testing::Range(0, kShards));

}  // namespace
