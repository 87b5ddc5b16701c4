#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>

#include "bitstream/CBitStreamer.h"
#include "bitstream/WordBytes.h"

namespace qmx {

/// Packs bits, lowest first, into the 64-bit words of a buffer of fixed size. A full buffer is the
/// ordinary way in which a budget ends a stream. Derived writers supply new space instead.
/// Format: docs/format.md, 4 Bit order.
///
/// Invariants between calls:
///  - `accumulator` holds the bits below `bitMask`; all bits from `bitMask` up are 0;
///  - `endMask` is 0 while a whole word is being filled;
///  - in the tail, `endMask` is one bit beyond the last tail bit, so the end is noticed when one
///    bit too many has been taken, and that bit is carried into the next space.
class CBitWriter : public CBitRawStreamer {
public:
    /// Requires: data holds sizeBytes bytes (it may be null when sizeBytes is 0) and outlives the
    /// writer. Owns: nothing but its name.
    CBitWriter(void* data, std::size_t sizeBytes);

    const char* getType() const override { return "buffer"; }
    char getMode() const override { return 'w'; }
    /// Bits written so far; exactly the size of the buffer when it has overflowed. Writing on after
    /// that is memory-safe, but its bits are lost and the total means nothing.
    std::uint64_t getTotal() const override;

    /// Supplies fresh space in `buffer`, `bufferWords` and `tailBytes`.
    /// Throws: 3, always, in this class; the bit that did not fit is not counted.
    virtual void flushBuffer();
    /// Announces how many bytes will be written; lazy writers allocate that much.
    virtual void setSize(std::uint64_t sizeBytes);

    /// Appends the nbits low bits of value, bit 0 first. Requires: 0 <= nbits <= 64.
    /// Throws: 3 when the space is full, with every bit that fitted in place.
    void writeInt(std::uint64_t value, int nbits) {
        if (nbits < kWordBits) value &= lowBits(nbits);
        // countr_zero is at most 63 here: a mask of 0 occurs only where endMask is not 0.
        if (endMask == 0 && std::countr_zero(bitMask) + nbits < kWordBits) {
            accumulator |= value << std::countr_zero(bitMask);
            bitMask <<= nbits;
        } else {
            writeAcross(value, nbits);
        }
    }

    /// Appends one bit. Requires: bit is 0 or 1. Throws: as writeInt.
    void writeBit(std::uint64_t bit) {
        accumulator |= (std::uint64_t{0} - bit) & bitMask;
        bitMask <<= 1;
        if (bitMask == endMask) completeWord();
    }

    /// Appends the first totalBits bits of words, the same as writeInt on each of them.
    /// Throws: as writeInt.
    void writeWords(const std::uint64_t* words, std::uint64_t totalBits);

    /// Stores the partly filled word, as far as its bytes exist. The position does not change, so
    /// writing may go on, and a later flush stores the same word again.
    void flush();

protected:
    /// The step at the end of a word that is not followed by a whole word.
    /// Returns: false when the caller has to store the word, true when new space already holds the
    /// surplus bit. Throws: what flushBuffer throws.
    bool checkFlushBuffer();

    /// Takes the last bit back, for which there is no room.
    void stepBitBack() {
        bitMask >>= 1;
        accumulator &= bitMask - 1;
    }
    /// The end mark of a buffer that has no whole word; 2 when it has no tail either.
    std::uint64_t tailEndMask() const { return std::uint64_t{1} << (8 * tailBytes + 1); }

    unsigned char* buffer;
    std::int64_t bufferWords;
    /// Word index in buffer, not a pointer: it may stand one word beyond the tail, where a pointer
    /// would be undefined.
    std::int64_t cursor = 0;
    std::uint64_t accumulator = 0;
    std::uint64_t bitMask = 1;
    std::uint64_t endMask = 0;
    std::uint32_t tailBytes;

private:
    /// Requires: count whole words after the one at the cursor, and endMask is 0.
    void mergeWords(const std::uint64_t* words, std::int64_t count);
    void writeAcross(std::uint64_t value, int nbits);
    void completeWord();
    void storeAccumulator();
};

}  // namespace qmx
