#pragma once

#include <cstdint>

#include "bitstream/CBitWriter.h"

namespace qmx {

// Format: docs/format.md, 11 Run code.

/// The run parameter of every coder: runs up to it are sent in unary.
inline constexpr int kRunParameter = 1;
/// This many zero bits before a one are an escape.
inline constexpr int kEscapeZeros = 40;
/// A reader stops counting here; so many zero bits are the end of a section.
inline constexpr int kEndZeros = 41;
/// The run that the end of a section stands for is one longer than this.
inline constexpr std::uint64_t kEndRun = std::uint64_t{1} << 30;

/// Number of bits after the one bit of a code whose zeros were counted.
constexpr int suffixBits(int zeros, int k) {
    return zeros - k;
}

/// Returns: the run that a code with k < zeros < kEscapeZeros stands for.
constexpr std::uint64_t runOf(int zeros, std::uint64_t suffix, int k) {
    return static_cast<std::uint64_t>(k) + lowBits(suffixBits(zeros, k)) + suffix;
}

/// Appends the code of a run. Requires: 0 <= k < 20 and run < 2^39. Throws: what writer throws.
inline void writeRunCode(CBitWriter& writer, std::uint64_t run, int k) {
    if (run <= static_cast<std::uint64_t>(k)) {
        writer.writeInt(std::uint64_t{1} << run, static_cast<int>(run) + 1);
        return;
    }
    const std::uint64_t m = run - static_cast<std::uint64_t>(k) + 1;
    const int n = bitLength(m) - 1;
    writer.writeInt(std::uint64_t{1} << (k + n), k + n + 1);
    writer.writeInt(m, n);
}

/// Returns: the number of bits of the code of a run. Requires: as writeRunCode.
constexpr std::uint64_t runCodeBits(std::uint64_t run, int k) {
    const auto unary = static_cast<std::uint64_t>(k);
    if (run <= unary) return run + 1;
    return unary + 1 + 2 * static_cast<std::uint64_t>(bitLength(run - unary + 1) - 1);
}

}  // namespace qmx
