#include "coding/decode/RunLookUp.h"

#include <gtest/gtest.h>

#include "bitstream/CBitDecoder.h"

namespace {

using namespace qmx;

/// What the decoder makes of the signed runs that an entry says it holds.
struct Plain {
    unsigned bits = 0;
    unsigned candidates = 0;
    unsigned fresh = 0;
    unsigned negatives = 0;
};

/// A decoder behind the code of a first run of 0, with zeros behind the bits of window.
Plain decode(unsigned window, unsigned wholeBits) {
    const std::uint64_t words[] = {std::uint64_t{window} << 1 | 1, 0, 0};
    CBitReader reader(words, sizeof words);
    CBitDecoder decoder;
    decoder.attach(&reader);
    Plain plain;
    while (plain.bits < wholeBits) {
        plain.fresh |= 1U << plain.candidates;
        plain.negatives |= static_cast<unsigned>(decoder.readRawBit()) << plain.candidates;
        decoder.readRun();
        plain.candidates += 1 + static_cast<unsigned>(decoder.getRun());
        plain.bits = static_cast<unsigned>(decoder.getStoredTotal()) - 1;
    }
    return plain;
}

TEST(RunLookUp, EntriesAreWhatTheDecoderReads) {
    for (unsigned window = 0; window < kRunLookUps.size(); ++window) {
        const RunLookUp& entry = kRunLookUps[window];
        const Plain plain = decode(window, entry.bits);
        ASSERT_EQ(entry.bits, plain.bits) << window;
        ASSERT_EQ(entry.candidates, plain.candidates) << window;
        ASSERT_EQ(entry.fresh, plain.fresh) << window;
        ASSERT_EQ(entry.negatives, plain.negatives) << window;
    }
}

TEST(RunLookUp, EntriesHoldAsManySignedRunsAsFit) {
    for (unsigned window = 0; window < kRunLookUps.size(); ++window) {
        const RunLookUp& entry = kRunLookUps[window];
        ASSERT_LE(entry.bits, kLookUpBits);
        ASSERT_LE(entry.candidates, kLookUpCandidates);
        const Plain longer = decode(window, entry.bits + 1U);
        const bool fits = longer.bits <= unsigned{kLookUpBits} &&
                          longer.candidates <= unsigned{kLookUpCandidates};
        ASSERT_FALSE(fits) << window;
    }
}

}  // namespace
