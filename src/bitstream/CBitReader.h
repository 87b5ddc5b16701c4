#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "bitstream/CBitStreamer.h"
#include "bitstream/WordBytes.h"

namespace qmx {

/// Where the data behind a reader's buffer goes on in a file; file is null for memory.
struct FilePosition {
    std::FILE* file = nullptr;
    std::int64_t offsetBytes = 0;
};

/// The whole words that a reader has loaded: bits next to end of bytes are still to come.
struct BitSpan {
    const unsigned char* bytes;
    std::uint64_t next;
    std::uint64_t end;
};

/// Takes bits, lowest first, from the 64-bit words of a buffer that the caller keeps alive.
/// Format: docs/format.md, 4 Bit order.
///
/// `accumulator` holds the unread bits of the current word with a sentinel 1 directly above the
/// highest of them. 1 means that none is held; 0 that the sentinel was consumed and no data came.
class CBitReader : public CBitRawStreamer {
public:
    /// Requires: data holds sizeBytes bytes (it may be null when sizeBytes is 0) and outlives the
    /// reader. Owns: nothing but its name.
    CBitReader(const void* data, std::size_t sizeBytes);

    const char* getType() const override { return "buffer"; }
    char getMode() const override { return 'r'; }
    /// Bits consumed so far; one more after a read has failed; nothing to rely on after a failed
    /// skip.
    std::uint64_t getTotal() const override;

    /// Installs more data in `buffer`, `bufferWords` and `tailBytes` and resets `cursor`.
    /// Throws: 3 when there is no more data; always, in this class.
    virtual void fetch();
    /// Makes this reader go on exactly where source stands; the two share the data afterwards.
    /// The length in bits is not a limit. Of a source that reads a file only what it has loaded is
    /// shared; CBitInfiniteReader goes on in the file. Requires: source's data outlives this reader.
    virtual void create(CBitReader* source, std::uint64_t lengthBits);
    /// Consumes nbits bits without looking at them.
    /// Throws: 3 when fewer are left.
    virtual void skip(std::uint64_t nbits);
    /// Where the words behind `cursor` stand in a file, if they come from one.
    virtual FilePosition filePosition() const { return {}; }

    /// Returns: the bits that can be read straight from memory; none, with next == end, where the
    /// next bit stands in no whole word of the buffer. Bits behind the end come through the reader.
    BitSpan loadedBits() const;
    /// Goes on at a bit of loadedBits(). Requires: its next <= bit <= its end.
    void goOnAt(std::uint64_t bit);

    /// Returns: the next bits, the first one in bit 0. The width counts modulo 64, so widths of 0
    /// and 64 return 0 and consume nothing. Throws: 3 when the data ends, with the bits before
    /// the end consumed.
    std::uint64_t readInt(int nbits) {
        const int width = nbits & (kWordBits - 1);
        if (width >= bitLength(accumulator)) return readAcross(width);
        const std::uint64_t value = accumulator & lowBits(width);
        accumulator >>= width;
        return value;
    }

    /// Returns: the next bit. Throws: 3 when there is none.
    std::uint64_t readBit() {
        if (accumulator <= 1) return nextWordFirstBit();
        const std::uint64_t bit = accumulator & 1;
        accumulator >>= 1;
        return bit;
    }

    /// Consumes zero bits and the one bit that ends them, or limit zero bits if no one bit comes
    /// earlier. Returns: how many zeros it took. Requires: limit >= 0. Throws: 3 at the data's end.
    int countZeros(int limit);

protected:
    bool endsInTail() const { return tailBytes != 0; }

    const unsigned char* buffer;
    std::int64_t bufferWords;
    /// Index of the next word to load. One beyond the tail once the tail has been loaded.
    std::int64_t cursor = 0;
    std::uint64_t accumulator = 1;
    std::uint32_t tailBytes;

private:
    /// Loads the next word. Returns: its first bit. Throws: 3.
    int fetchAccumulator();
    std::uint64_t nextWordFirstBit();
    std::uint64_t readAcross(int nbits);
};

}  // namespace qmx
