#pragma once

#include "api/tesk.h"
#include "container/CEitherCoder.h"
#include "container/CStreamDecoder.h"

namespace qmx {

/// A decompression of the C interface: gives the rows of the picture of a job, one after the other.
class CDecompression {
public:
    /// Requires: what streamJob names outlives this object. Throws: std::bad_alloc.
    explicit CDecompression(const StreamJob& streamJob,
                            MostBitsOfShort mostBits = MostBitsOfShort::inMemory)
        : job(streamJob), decoder(job.header, mostBits, job) {}
    CDecompression(const CDecompression&) = delete;
    CDecompression& operator=(const CDecompression&) = delete;

    /// Reads the section headers. Returns: TESK_OK, TESK_CUT, TESK_STOPPED or TESK_INVALID_STREAM.
    /// Throws: std::bad_alloc.
    tesk_status open();
    /// Writes count rows to out, strideBytes from one to the next. Returns: TESK_OK or TESK_STOPPED.
    /// Requires: open has returned TESK_OK or TESK_CUT; there are so many rows to come; out may be null
    /// where rows have no bytes. Throws: std::bad_alloc.
    tesk_status store(unsigned char* out, std::size_t strideBytes, std::uint32_t count);
    /// Returns: rows to come. Requires: as above.
    std::uint32_t rowsLeft();

private:
    StreamJob job;
    CEitherCoder<CStreamDecoder> decoder;
};

}  // namespace qmx
