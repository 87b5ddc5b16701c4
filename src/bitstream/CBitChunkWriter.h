#pragma once

#include "bitstream/BitBatch.h"
#include "bitstream/ByteBatch.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/CChunkList.h"

namespace qmx {

/// 64-bit words in the first chunk, 512 bytes, unless the writer is told another number. Each further
/// chunk has twice as many as the one before it, up to 32 KiB. Implementation limits, not part of a stream.
inline constexpr int kFirstChunkWords = 64;
inline constexpr int kMostChunkWords = 4096;

/// A writer that grows without limit through a list of chunks. The coefficient encoder writes each
/// section into one, so that its length is known when it is copied into the stream.
class CBitChunkWriter final : public CBitWriter {
public:
    CBitChunkWriter();

    /// Takes chunks from chunkMemory instead of from new, the first one of firstChunkWords. Requires: nothing
    /// has been written yet; chunkMemory outlives the writer; firstChunkWords > kSlackWords.
    void useMemory(std::pmr::memory_resource* chunkMemory, int firstChunkWords = kFirstChunkWords) {
        chunks.useMemory(chunkMemory);
        firstWords = firstChunkWords;
    }

    const char* getType() const override { return "dynamic"; }
    std::uint64_t getTotal() const override { return bitsInChunks + CBitWriter::getTotal(); }
    /// Appends a chunk. Throws: std::bad_alloc; the bit that needed the chunk is not counted, and
    /// nothing may be written after it.
    void flushBuffer() override;

    /// Returns: the position behind all bits, for appends without the writer.
    BitBatch beginBatch();
    /// Gives a full batch room in a new chunk, and moves what stands in the slack there.
    /// Requires: batch.isFull(), and a bit to follow or to move. Throws: std::bad_alloc; then
    /// nothing may be written any more.
    void makeRoom(BitBatch& batch) { moveSurplus(batch.at, batch.end); }
    void makeRoom(ByteBatch& batch) { moveSurplus(batch.at, batch.end); }
    /// Takes over all bits of a batch. Throws: as makeRoom.
    void endBatch(BitBatch batch);
    void endBatch(ByteBatch batch) { endBatch(batch.inWords(buffer)); }

    /// Copies the first nbits bits, or all of them when nbits is 0 or more than there are.
    /// Returns: the number of bits copied. Throws: what destination throws; the bits that fitted
    /// are in it. Changes nothing in this writer but its last, partial word.
    std::uint64_t writeBitsTo(CBitWriter* destination, std::uint64_t nbits);

private:
    void appendChunk();
    void enterChunk();
    void standAt(std::int64_t word);
    /// Moves the bytes from end to at into a new chunk, where both stand afterwards.
    void moveSurplus(unsigned char*& at, unsigned char*& end);

    int firstWords = kFirstChunkWords;
    std::uint64_t inlineWord = 0;
    std::uint64_t bitsInChunks = 0;
    CChunkList chunks;
};

}  // namespace qmx
