#pragma once

#include <cstddef>
#include <cstdint>

#include "bitstream/BitBatch.h"

namespace qmx {

/// A BitBatch for short appends: it moves on by whole bytes, not words.
///
/// Invariants: `pending` is 0..7; `accumulator` holds the `pending` bits that stand at `at`; all bytes
/// in front of `at` are in memory.
struct ByteBatch {
    /// The most bits that one append takes: with those that are pending they do not fill a word.
    static constexpr int kMaxBits = kWordBits - 8;

    bool isFull() const { return at >= end; }

    /// Appends nbits bits. Requires: 0 <= nbits <= kMaxBits, all bits of value from nbits up are 0, and
    /// no more than kSlackWords * kMaxBits bits in all since isFull() was false.
    ///
    /// Plain way: BitBatch::append. Since there is always room for the value, nothing spills over, and a
    /// third of its operations go: 2.7 cycles in place of 3.3 (2026-11-21).
    [[gnu::always_inline]] inline void append(std::uint64_t value, std::uint64_t nbits) {
        accumulator |= value << pending;
        storeWord(at, accumulator);
        const std::uint32_t total = pending + static_cast<std::uint32_t>(nbits);
        at += total / 8;
        accumulator >>= total / 8 * 8;
        pending = total % 8;
    }

    /// The byte that is being filled; it may stand in the slack behind the chunk.
    unsigned char* at;
    /// As in BitBatch.
    unsigned char* end;
    std::uint64_t accumulator;
    /// 32 bits on purpose: beside a second 64-bit field, g++ 12 keeps both in one vector register through
    /// the loops of appends, which takes longer.
    std::uint32_t pending;
};

}  // namespace qmx
