#pragma once

#include <cstdint>
#include <string>

#include "convert/CTextCursor.h"

namespace qmx {

/// What a PNM or PAM file says in front of its samples.
struct PnmHead {
    std::uint64_t width = 0;
    std::uint64_t height = 0;
    std::uint64_t channels = 1;
    std::uint64_t maxValue = 1;
    /// Samples are decimal numbers.
    bool isPlain = false;
    /// Samples are bits of which 1 is black.
    bool isBitmap = false;
    bool hasAlpha = false;
    /// The names of colours where they are neither gray nor RGB.
    std::string otherColours;

    unsigned sampleBytes() const { return maxValue > 255 ? 2 : 1; }
};

/// Takes the head. Requires: file begins with P and a digit from 1 to 7; text stands behind them.
/// Throws: Refusal.
PnmHead readPnmHead(char digit, CTextCursor& text);

}  // namespace qmx
