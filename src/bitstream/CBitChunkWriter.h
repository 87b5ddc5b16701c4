#pragma once

#include "bitstream/CBitWriter.h"
#include "bitstream/CChunkList.h"

namespace qmx {

/// A writer that grows without limit through a list of chunks.
class CBitChunkWriter final : public CBitWriter {
public:
    CBitChunkWriter();

    const char* getType() const override { return "dynamic"; }
    std::uint64_t getTotal() const override { return bitsInChunks + CBitWriter::getTotal(); }
    /// Appends a chunk. Throws: std::bad_alloc; the bit that needed the chunk is not counted, and
    /// nothing may be written after it.
    void flushBuffer() override;

    /// Copies the first nbits bits, or all of them when nbits is 0 or more than there are.
    /// Returns: the number of bits copied. Throws: what destination throws; the bits that fitted
    /// are in it. Changes nothing in this writer but its last, partial word.
    std::uint64_t writeBitsTo(CBitWriter* destination, std::uint64_t nbits);

private:
    std::uint64_t inlineWord = 0;
    std::uint64_t bitsInChunks = 0;
    CChunkList chunks;
};

}  // namespace qmx
