#pragma once

#include <atomic>

#include "ITeskDecompressor.h"
#include "TKHeader.h"

namespace qmx {

#pragma GCC visibility push(default)

/// Decompresses one stream that begins with its header. It does not look at the magic. decompress holds a raw
/// image besides the caller's until all of it is decoded, so it writes nothing if it is stopped.
/// Format: docs/format.md, 13 Decoding, memory profile.
class CTeskDecompressor : public ITeskDecompressor, protected CTeskHeader {
public:
    /// Reads the header. A stream of 16 bytes or less has a header of zeros.
    /// Requires: data holds lengthBytes bytes (it may be null when that is 0) and stays as it is
    /// until this object is destroyed.
    CTeskDecompressor(const unsigned char* data, unsigned long lengthBytes);
    ~CTeskDecompressor() override;
    CTeskDecompressor(const CTeskDecompressor&) = delete;
    CTeskDecompressor& operator=(const CTeskDecompressor&) = delete;

    int getBytesPerPixel() override { return bytesPerPixel; }
    int getBitsPerPixel() override { return bitsPerPixel; }
    int getXSize() override { return xSize; }
    int getYSize() override { return ySize; }
    int decompress(void* out, unsigned long sizeBytes) override;
    void stop() override;
    void kill() override;

private:
    template <class T>
    int decode(void* out, unsigned long sizeBytes);

    const unsigned char* stream;
    unsigned long streamBytes;
    int status;
    std::atomic<bool> isKilled{false};
    /// Also when it is killed.
    std::atomic<bool> isStopped{false};
    /// Programs that were built with version 1.0 make objects of this size.
    [[maybe_unused]] void* reserved[2] = {};
};

#pragma GCC visibility pop

}  // namespace qmx
