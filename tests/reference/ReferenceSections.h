#pragma once

#include <cstdint>
#include <vector>

#include "ReferenceBits.h"
#include "ReferenceImage.h"

namespace reference {

/// The payload of a section and the number of its new coefficients.
struct Section {
    BitString payload;
    std::int64_t count = 0;
};

/// The folded values of a band in scan order (docs/format.md, 7).
using FoldedValues = std::vector<std::int64_t>;

/// Negative folded values have wrapped and count as 0, too (docs/format.md, 8).
inline std::int64_t magnitude(std::int64_t folded) {
    return folded < 2 ? 0 : folded >> 1;
}

/// docs/format.md, 11.1.
inline void appendRun(BitString& bits, std::int64_t run) {
    if (run == 0) return bits.append(true);
    const std::int64_t n = bitLength(run) - 1;
    bits.append(0, n + 1);
    bits.append(true);
    bits.append(static_cast<std::uint64_t>(run), n);
}

/// docs/format.md, 10.2.
inline Section nSection(const FoldedValues& values, std::int64_t p) {
    Section section;
    std::int64_t run = 0;
    for (const std::int64_t f : values) {
        const std::int64_t fromPlane = magnitude(f) >> p;
        if (fromPlane > 1) continue;  // significant above p
        if (fromPlane == 0) {
            ++run;
            continue;
        }
        appendRun(section.payload, run);
        section.payload.append((f & 1) != 0);
        run = 0;
        ++section.count;
    }
    if (section.count > 0) appendRun(section.payload, run);
    return section;
}

/// docs/format.md, 10.3.
inline Section uSection(const FoldedValues& values, std::int64_t p) {
    Section section;
    for (const std::int64_t f : values) {
        const std::int64_t fromPlane = magnitude(f) >> p;
        if (fromPlane > 1) section.payload.append((fromPlane & 1) != 0);
    }
    return section;
}

}  // namespace reference
