#pragma once

#include "api/CodecHandle.h"
#include "bitstream/CBitWriter.h"
#include "container/CExactEncoder.h"
#include "container/StreamReading.h"

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
    const CStopRequest& stop;
    TKHeader header;
    const void* pixels;
    std::size_t strideBytes;
    std::size_t budgetBytes;
    IStreamPlace& place;
    /// What tesk_result says.
    std::size_t streamBytes = 0;
    bool isCut = false;
    tesk_loss loss = TESK_LOSS_NONE;
    std::uint32_t rescue = 0;

    bool has(std::uint32_t flag) const { return (codec.flags & flag) != 0; }
};

/// Puts header and stream of a coded image in their place, as far as the budget lets them. Sets
/// request.streamBytes and isCut. Returns: what was written; its bytes are null when there is too little
/// room. Throws: std::bad_alloc.
template <class T>
WrittenStream writeCoded(CompressRequest& request, const TKHeader& header,
                         CCodedSections<T>& sections, CCallMemory& memory) {
    const std::size_t completeBytes = sizeof header + sections.facts().streamBytes();
    request.isCut = request.budgetBytes != 0 && request.budgetBytes < completeBytes;
    request.streamBytes = request.isCut ? request.budgetBytes : completeBytes;
    unsigned char* out = request.place.take(request.streamBytes, memory);
    if (out == nullptr) return {};
    std::memcpy(out, &header, sizeof header);
    out += sizeof header;
    const std::size_t bytesBehindHeader = request.streamBytes - sizeof header;
    CBitWriter writer(out, bytesBehindHeader);
    sections.writeWhatFits(writer, request.stop);
    return {out, bytesBehindHeader, sections.facts().misreadBit};
}

/// Compresses to the plain stream, cut at the budget. Throws: std::bad_alloc.
tesk_status runPlainCall(CompressRequest& request, const ImageJob& job, CCallMemory& memory);

/// Compresses to a stream that restores the image, cut at the budget. Throws: std::bad_alloc.
tesk_status runExactCall(CompressRequest& request, ImageJob& job, CCallMemory& memory);

/// Returns: the number of the C interface for what a stream loses.
tesk_loss lossNumber(const LossReport& report);

}  // namespace qmx
