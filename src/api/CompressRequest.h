#pragma once

#include <memory_resource>

#include "api/tesk.h"
#include "container/Loss.h"

namespace qmx {

/// Where a stream goes once its size is known.
class IStreamPlace {
public:
    virtual ~IStreamPlace() = default;
    /// Returns: room for sizeBytes bytes, or null when they do not fit. Throws: std::bad_alloc.
    virtual unsigned char* take(std::size_t sizeBytes, std::pmr::memory_resource& memory) = 0;
};

/// What is wanted of a compression, and what it came to.
struct CompressRequest {
    /// TESK_PLAIN and TESK_UNVERIFIED.
    std::uint32_t flags;
    /// 0 for none.
    std::size_t budgetBytes;
    IStreamPlace& place;

    /// Of the stream that was written; where the place has too little room, the bytes that are needed.
    std::size_t streamBytes = 0;
    bool isCut = false;
    tesk_loss loss = TESK_LOSS_NONE;
    std::uint32_t rescue = 0;

    bool has(std::uint32_t flag) const { return (flags & flag) != 0; }
};

/// Says in result, which may be null, what a call came to.
void report(const CompressRequest& request, tesk_status status, tesk_result* result);

/// Returns: the number of the C interface for what a stream loses.
tesk_loss lossNumber(const LossReport& report);

}  // namespace qmx
