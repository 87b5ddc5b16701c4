#pragma once

namespace qmx {

#pragma GCC visibility push(default)

/// Compresses one raw image in memory.
class ITeskCompressor {
public:
    virtual ~ITeskCompressor() = default;

    /// Compresses the image. Call it once: a later call returns the same number and does nothing.
    ///
    /// Returns: 0: the stream is complete; 4: it was cut at the budget; 8: it was stopped or killed; 128: no
    /// stream can hold such an image.
    /// Throws: std::bad_alloc; after it the object can only be destroyed.
    virtual int compress() = 0;
    /// Ends compress after the current row of coefficients. Any thread, any time.
    virtual void stop() = 0;
    /// As stop. Any thread, any time.
    virtual void kill() = 0;
    /// Allocates the block of the stream. compress calls it once, when it writes the first bit.
    /// Returns: sizeBytes bytes at any address, or null if there are none.
    virtual void* allocBlock(unsigned long sizeBytes) = 0;
    /// Releases what allocBlock returned.
    virtual void freeBlock(void* block) = 0;
};

#pragma GCC visibility pop

}  // namespace qmx
