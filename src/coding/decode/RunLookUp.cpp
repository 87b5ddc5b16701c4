#include "coding/decode/RunLookUp.h"

#include <bit>

#include "bitstream/RunCode.h"

namespace qmx {
namespace {

/// A sign and the run behind it. bits is 0 when they do not stand in the bits that were given.
struct SignedRun {
    int bits;
    bool negative;
    int run;
};

constexpr SignedRun firstSignedRun(unsigned window, int windowBits) {
    const int zeros = std::countr_zero(window >> 1);
    const int suffix = zeros > kRunParameter ? suffixBits(zeros, kRunParameter) : 0;
    const int bits = 1 + zeros + 1 + suffix;
    if (bits > windowBits) return {0, false, 0};
    const std::uint64_t value = (window >> (zeros + 2)) & lowBits(suffix);
    const std::uint64_t run =
        suffix > 0 ? runOf(zeros, value, kRunParameter) : static_cast<std::uint64_t>(zeros);
    return {bits, (window & 1) != 0, static_cast<int>(run)};
}

constexpr RunLookUp entryOf(unsigned window) {
    RunLookUp entry{};
    for (;;) {
        const SignedRun next = firstSignedRun(window >> entry.bits, kLookUpBits - entry.bits);
        const int candidates = entry.candidates + 1 + next.run;
        if (next.bits == 0 || candidates > kLookUpCandidates) return entry;
        entry.fresh = static_cast<std::uint16_t>(entry.fresh | 1U << entry.candidates);
        if (next.negative)
            entry.negatives = static_cast<std::uint16_t>(entry.negatives | 1U << entry.candidates);
        entry.bits = static_cast<std::uint8_t>(entry.bits + next.bits);
        entry.candidates = static_cast<std::uint8_t>(candidates);
    }
}

constexpr RunLookUps makeRunLookUps() {
    RunLookUps table{};
    for (unsigned window = 0; window < table.size(); ++window)
        table[window] = entryOf(window);
    return table;
}

}  // namespace

constexpr RunLookUps kRunLookUps = makeRunLookUps();

}  // namespace qmx
