#include "coding/encode/SectionLengths.h"

#include <algorithm>

#include "bitstream/RunCode.h"

namespace qmx {

std::uint64_t SectionLength::sentBits(std::uint64_t longestBits, ClosingRuns closing) const {
    const bool isLeftOut = bits > longestBits && leavesOut(closing, closingRun);
    return isLeftOut ? bits - runCodeBits(closingRun, kRunParameter) : bits;
}

std::array<SectionLength, kMagnitudeBits> significanceLengths(
    std::span<const std::uint64_t> foldedValues) {
    std::array<SectionLength, kMagnitudeBits> sections{};
    // As in COrderEncoder: a run is the distance from runStart, which moves on with coefficients that
    // the section does not cover.
    std::array<std::uint64_t, kMagnitudeBits> runStart{};
    std::uint64_t position = 0;
    for (const std::uint64_t folded : foldedValues) {
        const int newPlane = bitLength(folded >> 1) - 1;
        for (int p = 0; p < newPlane; ++p)
            ++runStart[static_cast<std::size_t>(p)];
        if (newPlane >= 0) {
            const auto p = static_cast<std::size_t>(newPlane);
            sections[p].bits += runCodeBits(position - runStart[p], kRunParameter) + 1;
            runStart[p] = position + 1;
        }
        ++position;
    }
    for (std::size_t p = 0; p < sections.size(); ++p) {
        if (sections[p].bits == 0) continue;
        sections[p].closingRun = position - runStart[p];
        sections[p].bits += runCodeBits(sections[p].closingRun, kRunParameter);
    }
    return sections;
}

std::uint64_t excessBits(std::span<const std::uint64_t> foldedValues, std::uint64_t longestBits,
                         ClosingRuns closing) {
    std::uint64_t most = 0;
    for (const SectionLength& section : significanceLengths(foldedValues)) {
        const std::uint64_t bits = section.sentBits(longestBits, closing);
        most = std::max(most, bits - std::min(bits, longestBits));
    }
    return most;
}

}  // namespace qmx
