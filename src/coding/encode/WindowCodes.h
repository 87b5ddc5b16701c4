#pragma once

#include <array>
#include <bit>
#include <cstdint>

#include "bitstream/RunCode.h"

namespace qmx {

// Joined codes of the events of n sections, an event being the code of a run and the sign behind it.
// Format: docs/format.md, 10.2 n section and 11 Run code.

/// Bits of a run code: `code` is to be appended as `bits` bits.
struct RunWord {
    std::uint32_t code;
    std::uint32_t bits;
};

/// Returns: the code of a run below 2^16.
constexpr RunWord runWord(std::uint32_t run) {
    static_assert(kRunParameter == 1);
    if (run == 0) return {1, 1};
    const int n = bitLength(run) - 1;
    const std::uint32_t low = run - (1U << n);
    return {(1U << (n + 1)) | low << (n + 2), static_cast<std::uint32_t>(2 * n + 2)};
}

/// Runs with a table entry; a longer one is sent in two pieces.
inline constexpr std::uint32_t kShortRuns = 256;

inline constexpr auto kRunWords = [] {
    std::array<RunWord, kShortRuns> words{};
    for (std::uint32_t run = 0; run < kShortRuns; ++run)
        words[run] = runWord(run);
    return words;
}();

/// Candidates behind an event that one look-up covers. Fewer take more look-ups, and a table of more
/// does not stay in the first cache.
inline constexpr int kWindowBits = 11;
/// An event takes at most two bits for each candidate that it passes.
inline constexpr int kWindowCodeBits = 2 * kWindowBits;

/// All events among kWindowBits candidates, in one word: the joined codes with 0 in place of signs,
/// the mask of the signs, the length of the codes, the number of events, and the number of
/// candidates up to and with the last one.
class CWindowCode {
public:
    constexpr CWindowCode() = default;
    constexpr explicit CWindowCode(std::uint32_t candidates) {
        std::uint64_t codes = 0;
        std::uint64_t signs = 0;
        std::uint64_t bits = 0;
        std::uint64_t passed = 0;
        for (std::uint32_t left = candidates; left != 0;) {
            const auto run = static_cast<std::uint32_t>(std::countr_zero(left));
            const RunWord word = runWord(run);
            codes |= std::uint64_t{word.code} << bits;
            bits += word.bits + 1;
            signs |= std::uint64_t{1} << (bits - 1);
            passed += run + 1;
            left >>= run + 1;
        }
        const auto events = static_cast<std::uint64_t>(std::popcount(candidates));
        packed = codes | signs << kSigns | bits << kBits | events << kEvents | passed << kPassed;
    }

    constexpr std::uint64_t codes() const { return packed & lowBits(kWindowCodeBits); }
    constexpr std::uint64_t signSlots() const {
        return packed >> kSigns & lowBits(kWindowCodeBits);
    }
    constexpr std::uint64_t bits() const { return packed >> kBits & 31; }
    constexpr std::uint64_t events() const { return packed >> kEvents & 15; }
    constexpr std::uint64_t passed() const { return packed >> kPassed; }

private:
    static constexpr int kSigns = kWindowCodeBits;
    static constexpr int kBits = 2 * kWindowCodeBits;
    static constexpr int kEvents = kBits + 5;
    static constexpr int kPassed = kEvents + 4;

    std::uint64_t packed = 0;
};

inline constexpr auto kWindowCodes = [] {
    std::array<CWindowCode, std::size_t{1} << kWindowBits> codes{};
    for (std::uint32_t candidates = 0; candidates < codes.size(); ++candidates)
        codes[candidates] = CWindowCode(candidates);
    return codes;
}();

}  // namespace qmx
