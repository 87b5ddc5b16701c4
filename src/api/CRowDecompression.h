#pragma once

#include "api/CDecompression.h"

namespace qmx {

/// A decompression whose rows are asked for by calls of their own.
class CRowDecompression {
public:
    /// Requires: imageHeader is that of stream, and supported; stream, memory and stopRequested outlive this
    /// object. Throws: std::bad_alloc.
    CRowDecompression(const TKHeader& imageHeader, const void* stream, std::size_t streamBytes,
                      std::pmr::memory_resource& memory, const std::atomic<bool>& stopRequested)
        : stop(stopRequested),
          streamHeader(imageHeader),
          decompression(jobOf(imageHeader, stream, streamBytes, memory, stop)) {}

    /// The rest as in CDecompression.
    tesk_status open() { return opened = decompression.open(); }
    tesk_status store(unsigned char* out, std::size_t strideBytes, std::uint32_t count) {
        return decompression.store(out, strideBytes, count);
    }
    std::uint32_t rowsLeft() { return decompression.rowsLeft(); }
    const TKHeader& header() const { return streamHeader; }
    /// Returns: what open has returned.
    tesk_status status() const { return opened; }

private:
    CStopRequest stop;
    TKHeader streamHeader;
    CDecompression decompression;
    tesk_status opened = TESK_STOPPED;
};

}  // namespace qmx
