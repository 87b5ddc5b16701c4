#include "coding/decode/RunLookUp.h"

#include <bit>

namespace qmx {
namespace {

/// A run code without its suffix.
struct CodeHead {
    int zeros;
    int suffix;
    /// The run when the suffix is 0.
    std::uint64_t leastRun;
};

/// Of the code at the start of bits. Where there are only zeros it is too long for a look-up.
constexpr CodeHead codeHeadAt(std::uint64_t bits) {
    const int zeros = std::countr_zero(bits | std::uint64_t{1} << kLookUpBits);
    if (zeros <= kRunParameter) return {zeros, 0, static_cast<std::uint64_t>(zeros)};
    return {zeros, suffixBits(zeros, kRunParameter), runOf(zeros, 0, kRunParameter)};
}

constexpr void fillEntry(RunLookUps& table, std::uint64_t window) {
    int bits = 0;
    std::uint64_t candidates = 0;
    std::uint64_t pattern = 0;
    for (;;) {
        const std::uint64_t rest = window >> bits;
        pattern |= (std::uint64_t{1} | (rest & 1) << 32) << candidates;
        const CodeHead code = codeHeadAt(rest >> 1);
        const int headEnd = bits + 1 + code.zeros + 1;
        const std::uint64_t least = candidates + 1 + code.leastRun;
        const std::uint64_t all = least + (rest >> (code.zeros + 2) & lowBits(code.suffix));
        if (headEnd + code.suffix > kLookUpBits || all > kLookUpCandidates) {
            table.patterns[window] = pattern;
            table.bits[window] = static_cast<std::uint8_t>(bits);
            table.candidates[window] = static_cast<std::uint8_t>(candidates);
            table.extended[window] =
                headEnd > kLookUpBits
                    ? RunLookUps::Extended{static_cast<std::uint16_t>(candidates),
                                           static_cast<std::uint8_t>(bits), 0}
                    : RunLookUps::Extended{static_cast<std::uint16_t>(least),
                                           static_cast<std::uint8_t>(headEnd),
                                           static_cast<std::uint8_t>(code.suffix)};
            return;
        }
        bits = headEnd + code.suffix;
        candidates = all;
    }
}

constexpr RunLookUps makeRunLookUps() {
    RunLookUps table{};
    for (unsigned window = 0; window < RunLookUps::kEntries; ++window)
        fillEntry(table, window);
    return table;
}

}  // namespace

constexpr RunLookUps kRunLookUps = makeRunLookUps();

}  // namespace qmx
