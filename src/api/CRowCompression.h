#pragma once

#include "api/CCompression.h"
#include "container/CPushedRows.h"

namespace qmx {

/// A compression whose rows come by calls of their own.
class CRowCompression {
public:
    /// flags: of the codec. Requires: header is supported; memory and stopRequested outlive this object.
    /// Throws: std::bad_alloc.
    CRowCompression(const TKHeader& header, std::uint32_t codecFlags, std::size_t streamBudgetBytes,
                    std::pmr::memory_resource* memory, const std::atomic<bool>& stopRequested)
        : flags(codecFlags),
          budgetBytes(streamBudgetBytes),
          rows(header),
          stop(stopRequested),
          job{header, rows, memory, stop},
          compression(job, flags) {}

    /// Returns: rows to come.
    std::uint32_t rowsLeft() { return compression.rowsLeft(); }
    /// Returns: the header, which is that of the caller's image until conclude.
    const TKHeader& header() const { return job.header; }
    /// Returns: what conclude needs for a stream that goes to place.
    CompressRequest request(IStreamPlace& place) const { return {flags, budgetBytes, place}; }

    /// Takes count rows, strideBytes from one to the next. Returns: TESK_OK or TESK_STOPPED.
    /// Requires: there are so many to come; first may be null where rows have no bytes.
    /// Throws: std::bad_alloc.
    tesk_status push(const unsigned char* first, std::size_t strideBytes, std::uint32_t count) {
        for (std::uint32_t r = 0; r < count; ++r) {
            rows.push(first == nullptr ? first : first + r * strideBytes);
            compression.takeRow();
            if (stop.isSet()) return TESK_STOPPED;
        }
        return TESK_OK;
    }
    /// As CCompression::conclude. Requires: all rows were taken; called once.
    tesk_status conclude(CompressRequest& wanted) {
        compression.finish();
        return compression.conclude(wanted);
    }

private:
    std::uint32_t flags;
    std::size_t budgetBytes;
    CPushedRows rows;
    CStopRequest stop;
    ImageJob job;
    CCompression compression;
};

}  // namespace qmx
