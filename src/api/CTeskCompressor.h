#pragma once

#include <memory>

#include "ITeskCompressor.h"
#include "TKHeader.h"

namespace qmx {

class CBitTeskWriter;
struct LossReport;

#pragma GCC visibility push(default)

/// Compresses one raw image into one block: the plain stream, which begins with its 16 header bytes, cut
/// at the budget. It does not restore every image; compressExactly does.
/// Format: docs/format.md, 12.2 Cutting at a budget, memory profile.
///
/// To place the block elsewhere, derive and override allocBlock and freeBlock. If such a class passes
/// ownsBlock true, it must call releaseBlock in its destructor: the destructor here can no longer call
/// its freeBlock.
class CTeskCompressor : public ITeskCompressor, protected CTeskHeader {
public:
    ///  - width, height: pixels, 0 to 65535.
    ///  - sampleBits: declared bits of one sample.
    ///  - pixelBytes: 1 for 8-bit gray, 2 for 16-bit gray in the byte order of the machine, 3 for
    ///    interleaved 8-bit R, G, B. With another number compress returns 128.
    ///  - data: height rows of width pixels without gaps, at any address. They are copied, and not needed
    ///    after the constructor.
    ///  - budgetBytes: the most bytes of the stream, header included. 0 does not mean "no limit" but an
    ///    estimate, which can cut small images (quirk 16): give a generous number instead. The block is
    ///    not made larger than a stream of such an image can be. 1 to 15 leave no room for a stream:
    ///    compress returns 4 and there is no block.
    ///  - ownsBlock: true: the block is released with this object. false: it is the caller's.
    ///
    /// Throws: std::bad_alloc.
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

    /// Returns: the block, which begins with the header; null before compress, and if there is none.
    /// Owns: the caller, unless ownsBlock was true.
    unsigned char* getBlock() const;
    /// Returns: the bytes of the block that hold header and stream, 0 without a block.
    unsigned long getStreamSize() const;

protected:
    /// Releases the block now if this object owns it.
    void releaseBlock();

private:
    friend class CBitTeskWriter;
    friend LossReport findLoss(CTeskCompressor& compressor, bool hasRate);

    /// A copy of the pixels, and what becomes of them.
    struct Job;
    template <class T>
    int encode();

    std::unique_ptr<Job> job;
    int status;
    std::unique_ptr<CBitTeskWriter> writer;
};

#pragma GCC visibility pop

}  // namespace qmx
