#pragma once

#include <atomic>

#include "api/CCallMemory.h"
#include "api/tesk.h"
#include "container/TKHeader.h"

/// What a caller of the C interface holds: its options and the wish to stop.
struct tesk_codec {
    qmx::AllocatorHooks hooks;
    std::size_t maxPixels;
    std::size_t maxMemoryBytes;
    /// TESK_PLAIN and TESK_UNVERIFIED.
    std::uint32_t flags;
    std::atomic<bool> stopRequested{false};

    bool isStopped() const { return stopRequested.load(std::memory_order_relaxed); }
};

namespace qmx {

/// Returns: whether a struct of the caller has all fields that this version knows.
template <class Struct>
bool hasKnownSize(const Struct& given) {
    return given.struct_bytes >= sizeof(Struct);
}

/// Sets all fields to 0. Requires: result may be null. Returns: false when its size is unknown; it is
/// then left as it is.
bool clearResult(tesk_result* result);

/// Reads the header of a stream. Returns: TESK_OK; TESK_INVALID_STREAM, header is then undefined;
/// TESK_UNSUPPORTED_FORMAT.
tesk_status readHeader(const void* stream, std::size_t streamBytes, TKHeader& header);

/// Returns: TESK_OK, or TESK_LIMIT_EXCEEDED when an image has more pixels than the codec allows.
tesk_status checkPixels(const tesk_codec& codec, const TKHeader& header);

/// Returns: row_stride_bytes with its default filled in, or 0 when it is smaller than a row or the
/// rows reach beyond all addresses.
std::size_t strideOrDefault(std::size_t strideBytes, const TKHeader& header);

/// Runs one call: gives it memory, and turns what it throws into a status. Nothing in the codec
/// throws anything but numbers, which the calls catch, and for lack of memory.
/// Requires: work(CCallMemory&) returns a status. result may be null.
template <class Work>
tesk_status runCall(const tesk_codec& codec, tesk_result* result, Work work) {
    CCallMemory memory(codec.hooks, codec.maxMemoryBytes);
    tesk_status status = TESK_OUT_OF_MEMORY;
    try {
        status = work(memory);
    } catch (...) {
        if (memory.limitReached()) status = TESK_LIMIT_EXCEEDED;
    }
    if (result != nullptr) result->peak_memory_bytes = memory.peakBytes();
    return status;
}

}  // namespace qmx
