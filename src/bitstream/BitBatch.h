#pragma once

#include <cstdint>

#include "bitstream/WordBytes.h"

namespace qmx {

/// Where a batch of appends to chunks stands, in a form that stays in registers. All bytes 0: in front of the
/// first chunk.
///
/// Invariants: `pending` is 0..63; `accumulator` holds the `pending` bits that stand at `at`.
struct BitBatch {
    /// The word that is being filled; it may stand in the slack behind the chunk.
    unsigned char* at;
    /// The end of the chunk: from here on its chunks have to make room before the next batch.
    unsigned char* end;
    std::uint64_t accumulator;
    std::uint64_t pending;

    bool isFull() const { return at >= end; }

    /// Appends nbits bits. Requires: 0 <= nbits <= 64, all bits of value from nbits up are 0, and no
    /// more than kSlackWords words since isFull() was false.
    ///
    /// Plain way: store the word and start the next one if the word is full. That branch depends on
    /// the data and is predicted badly. Here the word is stored each time, and `carry`, 0 or 1, is
    /// both the step of the cursor and, less one, the mask that keeps or drops the old word.
    [[gnu::always_inline]] inline void append(std::uint64_t value, std::uint64_t nbits) {
        const std::uint64_t joined = accumulator | value << pending;
        storeWord(at, joined);
        const std::uint64_t total = pending + nbits;
        const std::uint64_t carry = total / kWordBits;
        const std::uint64_t spill = value >> 1 >> (kWordBits - 1 - pending);
        at += carry * kWordBytes;
        accumulator = spill | (joined & (carry - 1));
        pending = total % kWordBits;
    }
};

}  // namespace qmx
