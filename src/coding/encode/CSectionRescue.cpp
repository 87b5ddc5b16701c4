#include "coding/encode/CSectionRescue.h"

#include <algorithm>

#include "coding/syntax/FoldedValue.h"

namespace qmx {
namespace {

/// In orders of up to so many values every block is tried.
constexpr std::size_t kFewValues = 64;

constexpr std::uint64_t kShortRange = std::uint64_t{1} << 16;

}  // namespace

std::uint64_t COtherRepresentative::moved(std::uint64_t folded, int) const {
    return (kShortRange - (folded >> 1)) << 1 | ((folded & 1) ^ 1);
}

std::uint64_t CWholeWraps::moved(std::uint64_t folded, int distance) const {
    const std::int64_t sum = unfold<std::int64_t>(folded) + (std::int64_t{distance} << shift);
    return static_cast<std::uint64_t>(fold(sum));
}

CSectionRescue::CSectionRescue(const FoldedValues& original, std::uint64_t longestBits,
                               const ICoefficientMove& coefficientMove,
                               const CStopRequest& stopRequest)
    : values(original),
      longest(longestBits),
      move(coefficientMove),
      stop(stopRequest),
      movable(original.get_allocator()),
      candidate(original, original.get_allocator()) {
    for (std::size_t i = 0; i < values.size(); ++i)
        if (move.canMove(values[i])) movable.push_back(i);
}

bool CSectionRescue::search(const Accept& accept) {
    if (isTaken({}, ClosingRuns::zerosLeftOut, accept)) return true;
    for (const ClosingRuns closing :
         {ClosingRuns::written, ClosingRuns::zerosLeftOut, ClosingRuns::leftOut})
        if (moveBlocks(closing, accept)) return true;
    return false;
}

bool CSectionRescue::moveBlocks(ClosingRuns closing, const Accept& accept) {
    return moveOneEnd(true, closing, accept) || moveOneEnd(false, closing, accept) ||
           (values.size() <= kFewValues &&
            (moveAnywhere(closing, accept) || moveTwoGroups(closing, accept)));
}

bool CSectionRescue::moveOneEnd(bool last, ClosingRuns closing, const Accept& accept) {
    // A move takes at least a sign and a run of one bit out of its section. In large orders the
    // steps are larger than 1, but well below what is missing.
    candidate = values;
    std::uint64_t count = std::max<std::uint64_t>(1, (excess(closing) + 1) / 2);
    for (; count <= movable.size(); count += std::max<std::uint64_t>(1, excess(closing) / 8)) {
        const auto moved = static_cast<std::size_t>(count);
        const std::size_t first = last ? movable.size() - moved : 0;
        if (isTaken({{first, moved}}, closing, accept)) return true;
    }
    return false;
}

bool CSectionRescue::moveAnywhere(ClosingRuns closing, const Accept& accept) {
    for (std::size_t count = 1; count <= movable.size(); ++count)
        for (std::size_t first = 0; first + count <= movable.size(); ++first)
            if (isTaken({{first, count}}, closing, accept)) return true;
    return false;
}

bool CSectionRescue::moveTwoGroups(ClosingRuns closing, const Accept& accept) {
    if (move.maxDistance() < 2) return false;
    const std::size_t all = movable.size();
    for (std::size_t count = 2; count <= all; ++count)
        for (std::size_t far = 1; far < count; ++far)
            if (isTaken({{all - count, count - far, 1}, {all - far, far, 2}}, closing, accept))
                return true;
    return false;
}

bool CSectionRescue::isTaken(std::initializer_list<Block> blocks, ClosingRuns closing,
                             const Accept& accept) {
    if (stop.isSet()) return true;
    std::copy(values.begin(), values.end(), candidate.begin());
    for (const Block& block : blocks)
        for (std::size_t i = block.first; i < block.first + block.count; ++i)
            candidate[movable[i]] = move.moved(values[movable[i]], block.distance);
    return excess(closing) == 0 && accept(candidate, closing);
}

std::uint64_t CSectionRescue::excess(ClosingRuns closing) const {
    return excessBits(candidate, longest, closing);
}

}  // namespace qmx
