#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <optional>

#include "api/CCallMemory.h"
#include "api/CRowCompression.h"
#include "api/CRowDecompression.h"
#include "api/tesk.h"
#include "container/TKHeader.h"

/// What a caller of the C interface holds: its options, the wish to stop, and the image whose rows are under
/// way.
struct tesk_codec {
    qmx::AllocatorHooks hooks;
    qmx::CKeptMemory kept;
    std::size_t maxPixels;
    std::size_t maxMemoryBytes;
    /// TESK_PLAIN and TESK_UNVERIFIED.
    std::uint32_t flags;
    std::atomic<bool> stopRequested{false};
    /// Of the one of the next two that there is; it outlives them, so it stands in front of them.
    std::optional<qmx::CCallMemory> rowMemory{};
    qmx::MemoryObject<qmx::CRowCompression> rowCompression{};
    qmx::MemoryObject<qmx::CRowDecompression> rowDecompression{};

    /// Returns: whether rows are under way. The codec then takes no other image.
    bool isBusy() const { return rowMemory.has_value(); }
    bool isStopped() const { return stopRequested.load(std::memory_order_relaxed); }
};

namespace qmx {

/// No version has a struct this long: a larger size is one that was never set.
inline constexpr std::size_t kMostStructBytes = 4096;

/// Bytes of a struct in version 1.0.
template <class Struct>
inline constexpr std::size_t kFirstBytes = sizeof(Struct);
template <>
inline constexpr std::size_t kFirstBytes<tesk_options> = offsetof(tesk_options, most_kept_bytes);

/// Returns: whether a struct of the caller has all fields of version 1.0. Later versions may have more than this
/// one knows; what a call fills in leaves those as they are.
template <class Struct>
bool hasKnownSize(const Struct& given) {
    // No version had a size between its first one and this one.
    if (given.struct_bytes == kFirstBytes<Struct>) return true;
    return given.struct_bytes >= sizeof(Struct) && given.struct_bytes <= kMostStructBytes;
}

/// Returns: whether a struct that a call reads has a known size and asks for nothing that this version
/// does not know: fields of later versions must be 0, the default.
template <class Struct>
bool isUnderstood(const Struct& given) {
    if (!hasKnownSize(given)) return false;
    if (given.struct_bytes <= sizeof(Struct)) return true;
    const auto* bytes = reinterpret_cast<const unsigned char*>(&given);
    return std::all_of(bytes + sizeof(Struct), bytes + given.struct_bytes,
                       [](unsigned char byte) { return byte == 0; });
}

/// Sets all fields to 0. Requires: result may be null. Returns: false when its size is unknown; it is
/// then left as it is.
bool clearResult(tesk_result* result);

/// Reads the header of a stream. Returns: TESK_OK; TESK_INVALID_STREAM, header is then undefined;
/// TESK_UNSUPPORTED_FORMAT.
tesk_status readHeader(const void* stream, std::size_t streamBytes, TKHeader& header);

/// Makes the header of an image. Returns: TESK_OK; TESK_UNSUPPORTED_FORMAT when the format cannot hold it,
/// header is then left as it is. Requires: isUnderstood(image).
tesk_status checkImage(const tesk_image& image, TKHeader& header);

/// The same, whatever bits_per_pixel is.
tesk_status checkShape(const tesk_image& image, TKHeader& header);

/// Checks all arguments that every call has that compresses, and makes the header.
/// Returns: TESK_OK; what the call has to return otherwise.
tesk_status checkCompression(const tesk_codec* codec, const tesk_image* image,
                             std::size_t budgetBytes, TKHeader& header);

/// The same for calls that decompress.
tesk_status checkDecompression(const tesk_codec* codec, const void* stream, std::size_t streamBytes,
                               TKHeader& header);

/// Returns: whether memory can have addresses for all rows of an image. On wasm32 that is not so for all
/// images of the format.
bool hasAddresses(const TKHeader& header);

/// Returns: TESK_OK, or TESK_LIMIT_EXCEEDED when an image has more pixels than the codec allows.
tesk_status checkPixels(const tesk_codec& codec, const TKHeader& header);

/// Returns: bytes that every call holds at least for such an image, a few rows. Requires: header is
/// supported.
std::size_t leastBytes(const TKHeader& header);

/// Returns: row_stride_bytes with its default filled in, or 0 when it is smaller than a row or the
/// rows of the image, if they have gaps, reach beyond all addresses.
std::size_t strideOrDefault(std::size_t strideBytes, const TKHeader& header);

/// Turns what work throws into a status. Nothing in the codec throws anything but numbers, which it catches
/// itself, and for lack of memory.
/// Requires: work() returns a status and takes its memory from memory.
template <class Work>
tesk_status guarded(const CCallMemory& memory, Work work) {
    try {
        return work();
    } catch (...) {
        return memory.limitReached() ? TESK_LIMIT_EXCEEDED : TESK_OUT_OF_MEMORY;
    }
}

/// Runs one call and gives it memory. Requires: work(CCallMemory&) returns a status. result may be null.
template <class Work>
tesk_status runCall(tesk_codec& codec, tesk_result* result, Work work) {
    CCallMemory memory(codec.kept, codec.maxMemoryBytes);
    const tesk_status status = guarded(memory, [&] { return work(memory); });
    if (result != nullptr) result->peak_memory_bytes = memory.peakBytes();
    return status;
}

}  // namespace qmx
