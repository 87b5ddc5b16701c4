#include "coding/decode/RunLookUp.h"

#include <gtest/gtest.h>

#include "bitstream/CBitDecoder.h"

namespace {

using namespace qmx;

constexpr unsigned kWindows = RunLookUps::kEntries;

/// What the decoder makes of the signed runs that an entry says it holds.
struct Plain {
    unsigned bits = 0;
    unsigned candidates = 0;
    std::uint64_t pattern = 0;
};

std::uint64_t patternOf(std::uint64_t sign, unsigned candidate) {
    return candidate < 32 ? (1 | sign << 32) << candidate : 0;
}

/// A decoder behind the code of a first run of 0, with zeros behind the given bits.
Plain decode(std::uint64_t stream, unsigned wholeBits) {
    const std::uint64_t words[] = {stream << 1 | 1, 0, 0};
    CBitReader reader(words, sizeof words);
    CBitDecoder decoder;
    decoder.attach(&reader);
    Plain plain;
    while (plain.bits < wholeBits) {
        plain.pattern |= patternOf(decoder.readRawBit(), plain.candidates);
        decoder.readRun();
        plain.candidates += 1 + static_cast<unsigned>(decoder.getRun());
        plain.bits = static_cast<unsigned>(decoder.getStoredTotal()) - 1;
    }
    return plain;
}

TEST(RunLookUp, EntriesAreWhatTheDecoderReads) {
    for (unsigned window = 0; window < kWindows; ++window) {
        const unsigned bits = kRunLookUps.bits[window];
        const Plain plain = decode(window, bits);
        ASSERT_EQ(bits, plain.bits) << window;
        ASSERT_EQ(kRunLookUps.candidates[window], plain.candidates) << window;
        const std::uint64_t open = patternOf(window >> bits & 1, plain.candidates);
        ASSERT_EQ(kRunLookUps.patterns[window], plain.pattern | open) << window;
    }
}

TEST(RunLookUp, EntriesHoldAsManySignedRunsAsFit) {
    for (unsigned window = 0; window < kWindows; ++window) {
        ASSERT_LE(kRunLookUps.bits[window], kLookUpBits);
        ASSERT_LE(kRunLookUps.candidates[window], kLookUpCandidates);
        const Plain longer = decode(window, kRunLookUps.bits[window] + 1U);
        const bool fits = longer.bits <= unsigned{kLookUpBits} &&
                          longer.candidates <= unsigned{kLookUpCandidates};
        ASSERT_FALSE(fits) << window;
    }
}

TEST(RunLookUp, ExtendedEntriesPassOneMoreSignedRunWithASuffixBehindTheBits) {
    for (unsigned window = 0; window < kWindows; ++window) {
        const RunLookUps::Extended& entry = kRunLookUps.extended[window];
        const unsigned suffixes = 1U << entry.suffixBits;
        for (unsigned suffix = 0; suffix < suffixes; suffix += std::max(suffixes / 8, 1U)) {
            const Plain plain =
                decode((window & ((1U << entry.bits) - 1)) | std::uint64_t{suffix} << entry.bits,
                       entry.bits + unsigned{entry.suffixBits});
            ASSERT_EQ(entry.bits + entry.suffixBits, plain.bits) << window;
            ASSERT_EQ(entry.candidates + suffix, plain.candidates) << window;
        }
    }
}

TEST(RunLookUp, ExtendedEntriesPassEveryRunWhoseZerosAndOneStandInTheBits) {
    for (unsigned window = 0; window < kWindows; ++window) {
        const RunLookUps::Extended& entry = kRunLookUps.extended[window];
        // The bits behind the sign of the open candidate.
        const bool hasOne = window >> kRunLookUps.bits[window] >> 1 != 0;
        ASSERT_EQ(entry.bits > kRunLookUps.bits[window], hasOne) << window;
        ASSERT_LE(entry.bits, kLookUpBits) << window;
        ASSERT_LE(entry.suffixBits, kMostSuffixBits) << window;
    }
}

}  // namespace
