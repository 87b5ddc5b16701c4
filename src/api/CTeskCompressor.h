#pragma once

#include <memory>

#include "ITeskCompressor.h"
#include "TKHeader.h"

namespace qmx {

class CBitTeskWriter;
struct LossReport;

#pragma GCC visibility push(default)

/// Compresses one raw image into one block: 16 header bytes, then the stream, cut where the budget
/// ends.
/// Format: docs/format.md, 12.2 Cutting at a budget, memory profile.
///
/// To place the block elsewhere, derive and override allocBlock and freeBlock. Such a class, if it
/// passes ownsBlock true, calls releaseBlock in its destructor: the destructor here no longer
/// reaches its freeBlock.
class CTeskCompressor : public ITeskCompressor, protected CTeskHeader {
public:
    ///  - width, height: pixels, 0 to 65535; sampleBits: significant bits of a sample;
    ///    pixelBytes: 1 for 8-bit gray, 2 for 16-bit gray in the byte order of the machine, 3 for
    ///    interleaved 8-bit R, G, B; another number gives an object whose compress returns 128.
    ///  - data: height rows of width pixels without gaps, at any address. Not used after the
    ///    constructor.
    ///  - budgetBytes: size of the block, header included; 1 to 15 leave no room for a stream, and
    ///    compress returns 4 without a block. 0: a size that the encoder estimates. A block that
    ///    no stream of such an image can fill is made smaller.
    ///  - ownsBlock: whether the block is released with this object, else it is the caller's.
    ///
    /// Throws: std::bad_alloc: the pixels are copied.
    CTeskCompressor(int width, int height, int sampleBits, int pixelBytes, const void* data,
                    unsigned long budgetBytes, bool ownsBlock);
    ~CTeskCompressor() override;
    CTeskCompressor(const CTeskCompressor&) = delete;
    CTeskCompressor& operator=(const CTeskCompressor&) = delete;

    int compress() override;
    void stop() override;
    void kill() override;
    /// Returns: memory aligned to 8 bytes, or null. Owns: the caller, who calls freeBlock.
    void* allocBlock(unsigned long sizeBytes) override;
    void freeBlock(void* block) override;

    /// Returns: the block, which begins with the header; null before compress and when there is
    /// none. Owns: the caller, unless ownsBlock was true.
    unsigned char* getBlock() const;
    /// Returns: the bytes of the block that hold header and stream, 0 without a block.
    unsigned long getStreamSize() const;

protected:
    /// Releases the block now if this object owns it.
    void releaseBlock();

private:
    friend class CBitTeskWriter;
    friend LossReport findLoss(CTeskCompressor& compressor, bool hasRate);

    /// A copy of the pixels, which may go after the constructor, and what becomes of them.
    struct Job;
    template <class T>
    int encode();

    std::unique_ptr<Job> job;
    int status;
    std::unique_ptr<CBitTeskWriter> writer;
};

#pragma GCC visibility pop

}  // namespace qmx
