#pragma once

#include "api/CodecHandle.h"
#include "wavelet/CWaveletEncoder.h"

namespace qmx {

/// Where a stream goes once its size is known.
class IStreamPlace {
public:
    virtual ~IStreamPlace() = default;
    /// Returns: room for sizeBytes bytes, or null when they do not fit. Throws: std::bad_alloc.
    virtual unsigned char* take(std::size_t sizeBytes, CCallMemory& memory) = 0;
    /// Takes the room back from a call that came to nothing.
    virtual void discard(tesk_codec& codec) = 0;
};

/// A compression with valid arguments, and what it came to.
struct CompressRequest {
    const tesk_codec& codec;
    TKHeader header;
    const void* pixels;
    std::size_t strideBytes;
    std::size_t budgetBytes;
    IStreamPlace& place;
    /// What tesk_result says.
    std::size_t streamBytes = 0;
    tesk_loss loss = TESK_LOSS_NONE;
    std::uint32_t rescue = 0;

    bool has(std::uint32_t flag) const { return (codec.flags & flag) != 0; }
};

/// Returns: room for header and stream as long as streamBytes, header in place; null when there is
/// too little.
inline unsigned char* placeHeader(CompressRequest& request, std::size_t streamBytes,
                                  CCallMemory& memory) {
    unsigned char* out = request.place.take(streamBytes, memory);
    request.streamBytes = streamBytes;
    if (out != nullptr) std::memcpy(out, &request.header, sizeof(TKHeader));
    return out;
}

/// Returns: the bytes of the complete stream of a coded image, header included.
template <class T>
std::size_t completeBytesOf(const CWaveletEncoder<T>& encoder) {
    return sizeof(TKHeader) + (encoder.getStreamBits() + 7) / 8;
}

/// Compresses to the plain stream, cut at the budget. Throws: std::bad_alloc.
tesk_status runPlainCall(CompressRequest& request, CCallMemory& memory);

/// Compresses to a stream that restores the image. Throws: std::bad_alloc.
tesk_status runExactCall(CompressRequest& request, CCallMemory& memory);

}  // namespace qmx
