#pragma once

#include "bitstream/CBitWriter.h"

namespace qmx {

/// A writer that takes its one block when the first bit arrives, so that the size may be set until
/// then.
///
/// Quirk 1: with a block of 0 bytes the first bit stays in the accumulator, every later bit is
/// dropped and nothing is thrown; see docs/quirks.md.
class CBitLazyWriter : public CBitWriter {
public:
    /// Owns: the block if ownsItsBlock, else whoever asks the writer for it.
    CBitLazyWriter(std::uint64_t blockSizeBytes, bool ownsItsBlock);
    ~CBitLazyWriter() override;

    const char* getType() const override { return "lazy"; }
    /// Throws: std::bad_alloc when the block cannot be had; 3 when the block is full.
    void flushBuffer() override;
    /// No effect once the block has been taken.
    void setSize(std::uint64_t sizeBytes) override;
    /// Returns: storage aligned to 8 bytes, or null.
    virtual void* allocateBlock(std::uint64_t sizeBytes);
    virtual void deleteBlock(void* block);

    /// Returns: the block's first byte, or null before the first bit.
    unsigned char* getBlock() const { return hasBlock() ? buffer : nullptr; }

protected:
    bool hasBlock() const { return buffer != inlineBytes(); }
    /// Returns: the block if it is this writer's, else null; the writer has none afterwards. Each
    /// class that overrides deleteBlock gives its own the block in its destructor, because the
    /// destructor of the base does not reach the override.
    void* takeOwnedBlock();

    std::uint64_t inlineWord = 0;
    std::uint64_t blockSize;
    bool ownsBlock;

private:
    const unsigned char* inlineBytes() const {
        return reinterpret_cast<const unsigned char*>(&inlineWord);
    }
};

}  // namespace qmx
