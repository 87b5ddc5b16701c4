#pragma once

#include <algorithm>
#include <cstring>

#include "bitstream/CBitWriter.h"
#include "bitstream/CChunkList.h"
#include "bitstream/CMemoryPool.h"

namespace qmx {

/// The chunks that the bits of a section stand in, all of them appended by one batch. All bytes 0: no chunk yet.
class CBitChunks {
public:
    /// Gives a full batch room in a new chunk, the first one of firstWords, and moves what stands in the slack
    /// there. Requires: batch.isFull(); firstWords > kSlackWords; pool outlives the chunks.
    /// Throws: std::bad_alloc; then nothing may be appended any more.
    template <class Batch>
    void makeRoom(Batch& batch, int firstWords, CMemoryPool& pool) {
        const std::ptrdiff_t surplusBytes = batch.at - batch.end;
        const unsigned char* const surplus = batch.end;
        append(firstWords, pool);
        batch.at = begin() + surplusBytes;
        batch.end = begin() + static_cast<std::ptrdiff_t>(last->words) * kWordBytes;
        if (surplusBytes != 0)
            std::memcpy(begin(), surplus, static_cast<std::size_t>(surplusBytes));
    }

    /// Returns: bits that were appended.
    template <class Batch>
    std::uint64_t total(const Batch& batch) const {
        if (last == nullptr) return 0;
        return bitsBefore + 8 * static_cast<std::uint64_t>(batch.at - begin()) + batch.pending;
    }

    /// Writes all bits to out. Throws: what out throws; the bits that fitted are in it.
    template <class Batch>
    void writeTo(CBitWriter& out, const Batch& batch) const {
        if (last == nullptr) return;
        storeWord(batch.at, batch.accumulator);
        for (MemChunk* chunk = first; chunk != last; chunk = chunk->next)
            out.writeWords(chunk->data(), bitsOf(chunk));
        // What stands in the slack belongs to it.
        out.writeWords(last->data(), total(batch) - bitsBefore);
    }

    /// Null while there are none.
    MemChunk* firstChunk() const { return first; }

private:
    static std::uint64_t bitsOf(const MemChunk* chunk) {
        return static_cast<std::uint64_t>(chunk->words) * kWordBits;
    }
    unsigned char* begin() const { return reinterpret_cast<unsigned char*>(last->data()); }
    void append(int firstWords, CMemoryPool& pool) {
        const int words = last == nullptr ? firstWords : std::min(2 * last->words, kMostChunkWords);
        MemChunk* const chunk = MemChunk::make(pool.take(MemChunk::blockBytes(words)), words);
        if (last != nullptr) bitsBefore += bitsOf(last);
        (last == nullptr ? first : last->next) = chunk;
        last = chunk;
    }

    MemChunk* first;
    MemChunk* last;
    /// Bits in front of the last chunk.
    std::uint64_t bitsBefore;
};

}  // namespace qmx
