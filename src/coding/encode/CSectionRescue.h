#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <vector>

#include "bitstream/CStopRequest.h"
#include "coding/encode/SectionLengths.h"

namespace qmx {

/// A way to change a coefficient so that another section announces it, and decoders come to the same
/// image all the same.
class ICoefficientMove {
public:
    virtual ~ICoefficientMove() = default;
    virtual bool canMove(std::uint64_t folded) const = 0;
    /// Requires: canMove(folded); 1 <= distance <= maxDistance().
    virtual std::uint64_t moved(std::uint64_t folded, int distance) const = 0;
    /// Returns: the number of different moves of one coefficient.
    virtual int maxDistance() const = 0;
};

/// The other representative modulo 2^16. A decoder with 16-bit coefficients stores v and
/// 65536 - |v| with the other sign alike, but the latter becomes significant in bit plane
/// 15. 0 has no other one.
class COtherRepresentative final : public ICoefficientMove {
public:
    bool canMove(std::uint64_t folded) const override { return folded >= 2; }
    std::uint64_t moved(std::uint64_t folded, int distance) const override;
    int maxDistance() const override { return 1; }
};

/// Adds distance times 2^(16 + 2 levels), which the inverse transform spreads over samples as
/// multiples of 2^16: a complete stream does not write them.
class CWholeWraps final : public ICoefficientMove {
public:
    /// Requires: coarsestLevels, 1 to 5 levels.
    explicit CWholeWraps(int coarsestLevels) : shift(16 + 2 * coarsestLevels) {}
    bool canMove(std::uint64_t) const override { return true; }
    std::uint64_t moved(std::uint64_t folded, int distance) const override;
    int maxDistance() const override { return 2; }

private:
    int shift;
};

/// Looks for values in place of those of the coarsest order whose n sections are too long, so that
/// all of them fit. Format: docs/format.md, 15 Images that do not come back.
///
/// Let an image of W x H samples have L levels, and its coarsest order N values. With
/// T = 2^bitlength(W H) / 4^L a length field holds 2 T - 1, and N is at most 1.5 T: moving N - T + 1 values
/// splits a section that is too long into two that fit, but for some orders of 12 values, whose last runs
/// have to be left out as well.
class CSectionRescue {
public:
    /// Is given values that fit. Returns: whether they are taken; the search goes on otherwise. What is
    /// not passed by std::ref may be copied to memory that is not the caller's.
    using Accept = std::function<bool(const FoldedValues& values, ClosingRuns closing)>;

    /// stopRequest: ends the search. Requires: all outlive the search.
    /// Throws: std::bad_alloc.
    CSectionRescue(const FoldedValues& original, std::uint64_t longestBits,
                   const ICoefficientMove& coefficientMove,
                   const CStopRequest& stopRequest = kNeverStopped);

    /// Returns: whether values were accepted, or the search was stopped. Changes as little as possible
    /// first.
    bool search(const Accept& accept);

private:
    /// Neighbours among the values that can move.
    struct Block {
        std::size_t first;
        std::size_t count;
        int distance = 1;
    };

    bool moveBlocks(ClosingRuns closing, const Accept& accept);
    bool moveOneEnd(bool last, ClosingRuns closing, const Accept& accept);
    bool moveTwoGroups(ClosingRuns closing, const Accept& accept);
    bool moveAnywhere(ClosingRuns closing, const Accept& accept);
    bool isTaken(std::initializer_list<Block> blocks, ClosingRuns closing, const Accept& accept);
    /// Returns: by how many bits the longest section of the candidate is too long.
    std::uint64_t excess(ClosingRuns closing) const;

    const FoldedValues& values;
    std::uint64_t longest;
    const ICoefficientMove& move;
    const CStopRequest& stop;
    std::pmr::vector<std::size_t> movable;
    FoldedValues candidate;
};

}  // namespace qmx
