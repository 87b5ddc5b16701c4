#pragma once

namespace qmx {

#pragma GCC visibility push(default)

/// Compresses one raw image in memory.
class ITeskCompressor {
public:
    virtual ~ITeskCompressor() = default;

    /// Codes the image. Returns: 0 when the stream is complete; 4 when it was cut at the budget;
    /// 8 when it was stopped or killed; 128 when the image format is not supported. A later call
    /// returns the same number and does nothing.
    /// Throws: std::bad_alloc; the object is then good for nothing but destruction.
    virtual int compress() = 0;
    /// Ends compress after the current row of coefficients. Any thread, any time.
    virtual void stop() = 0;
    /// As stop. Any thread, any time.
    virtual void kill() = 0;
    /// Where the block of the stream comes from. Called once, by compress, when the first bit is
    /// written. Returns: sizeBytes bytes at any address, or null when there are none.
    virtual void* allocBlock(unsigned long sizeBytes) = 0;
    /// Releases what allocBlock returned.
    virtual void freeBlock(void* block) = 0;
};

#pragma GCC visibility pop

}  // namespace qmx
