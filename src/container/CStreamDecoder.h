#pragma once

#include <optional>

#include "bitstream/CBitReader.h"
#include "coding/decode/CRowsDecoder.h"
#include "container/ImageJob.h"

namespace qmx {

/// A stream in memory that is decoded.
struct StreamJob {
    /// Its format is supported.
    TKHeader header;
    /// Behind the header.
    const unsigned char* stream;
    std::size_t streamBytes;
    std::pmr::memory_resource* memory;
    /// Ends all work.
    const CStopRequest& stop;
    /// The picture at 1 : 2^reduction is wanted; the image has so many levels, or it is 0.
    int reduction = 0;
};

/// Returns: the job of a stream that begins with its header.
inline StreamJob jobOf(const TKHeader& header, const void* stream, std::size_t streamBytes,
                       std::pmr::memory_resource& memory, const CStopRequest& stop,
                       int reduction = 0) {
    const auto* bytes = static_cast<const unsigned char*>(stream);
    return {header, bytes + sizeof header, streamBytes - sizeof header, &memory, stop, reduction};
}

/// Decodes a stream in memory to the raw rows of its picture, one after the other.
template <class T>
class CStreamDecoder {
public:
    /// Requires: streamJob outlives this object. Throws: std::bad_alloc.
    explicit CStreamDecoder(const StreamJob& streamJob);

    /// Reads the section headers. Returns: as CReceivedSections::read. Throws: std::bad_alloc.
    int open();
    /// Writes the next row to out. Returns: whether it was not stopped, also behind the row.
    /// Requires: open has returned 0 or 4; there is a row. Throws: std::bad_alloc.
    bool storeNext(unsigned char* out);
    /// Returns: rows that were written.
    int rowsStored() const { return rows->rowsRestored(); }

private:
    const StreamJob& job;
    CReceivedSections<T> sections;
    CBitReader reader;
    std::optional<CSampleLimit<T>> limit;
    std::optional<CRowsDecoder<T>> rows;
};

extern template class CStreamDecoder<short>;
extern template class CStreamDecoder<int>;

}  // namespace qmx
