#pragma once

#include "bitstream/CBitLazyWriter.h"

namespace qmx {

class CTeskCompressor;

/// The lazy writer behind a compressor: its block comes from the compressor and begins with the
/// compressor's header, the bits follow.
class CBitTeskWriter final : public CBitLazyWriter {
public:
    ///  - budgetBytes: the block with its header, 16 or more; 0 when setSize decides.
    ///  - boundBytes: what no complete stream exceeds; the block is no longer.
    ///
    /// Requires: owner outlives the writer. Owns: the block if ownsItsBlock.
    CBitTeskWriter(CTeskCompressor* owner, std::uint64_t budgetBytes, std::uint64_t boundBytes,
                   bool ownsItsBlock);
    ~CBitTeskWriter() override;

    /// With a budget of 0 and before the first bit: makes the block sizeBytes long, header included.
    /// A size without room for the header is that of the stream alone. Else no effect. The encoder
    /// announces a size that does not count the header (Quirk 16).
    void setSize(std::uint64_t sizeBytes) override;
    /// Returns: room for sizeBytes bytes behind a copy of the header, or null.
    void* allocateBlock(std::uint64_t sizeBytes) override;
    void deleteBlock(void* block) override;

    /// Releases the block if it is this writer's.
    void releaseBlock();
    /// Returns: the header in front of the bits, or null before the first bit.
    unsigned char* getHeader() const;
    /// Returns: whole bytes that the bits take in the block.
    std::uint64_t getStoredBytes() const;

private:
    CTeskCompressor* compressor;
    std::uint64_t budget;
};

}  // namespace qmx
