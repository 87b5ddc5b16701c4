// The calls of the C interface that compress.

#include "api/CompressRequest.h"

namespace qmx {
namespace {

constexpr std::uint32_t kGreatestSide = 65535;

class CCallerBuffer final : public IStreamPlace {
public:
    CCallerBuffer(void* buffer, std::size_t bufferBytes) : bytes(buffer), roomBytes(bufferBytes) {}
    unsigned char* take(std::size_t sizeBytes, CCallMemory&) override {
        return sizeBytes <= roomBytes ? static_cast<unsigned char*>(bytes) : nullptr;
    }
    void discard(tesk_codec&) override {}

private:
    void* bytes;
    std::size_t roomBytes;
};

class COutputBlock final : public IStreamPlace {
public:
    explicit COutputBlock(void** address) : block(address) {}
    unsigned char* take(std::size_t sizeBytes, CCallMemory& memory) override {
        *block = memory.allocate(sizeBytes);
        return static_cast<unsigned char*>(*block);
    }
    void discard(tesk_codec& codec) override {
        tesk_release_block(&codec, *block);
        *block = nullptr;
    }

private:
    void** block;
};

/// Returns: a header, if the format can hold such an image.
tesk_status checkImage(const tesk_image& image, TKHeader& header) {
    const bool hasLayout = image.bytes_per_pixel >= 1 && image.bytes_per_pixel <= 3;
    const std::uint32_t sampleBits = image.bytes_per_pixel == 2 ? 16 : 8;
    const bool hasBits = image.bits_per_pixel >= 1 && image.bits_per_pixel <= sampleBits;
    const bool hasSides = image.width <= kGreatestSide && image.height <= kGreatestSide;
    if (!hasLayout || !hasBits || !hasSides) return TESK_UNSUPPORTED_FORMAT;
    header = makeHeader(image.bytes_per_pixel, image.bits_per_pixel, image.width, image.height);
    return TESK_OK;
}

tesk_status compressInto(CompressRequest& request, CCallMemory& memory) {
    if (!memory.allows(leastBytes(request.header))) return TESK_LIMIT_EXCEEDED;
    CPixelsInMemory pixels(request.pixels, request.strideBytes);
    ImageJob job{request.header, pixels, &memory, request.stop};
    // A budget asks for as much as there can be, also of an image that no stream holds.
    const bool isPlain = request.has(TESK_PLAIN) || (request.budgetBytes != 0 && isOutOfReach(job));
    return isPlain ? runPlainCall(request, job, memory) : runExactCall(request, job, memory);
}

/// Says in result what a call came to.
void report(const CompressRequest& request, tesk_status status, tesk_result* result) {
    if (result == nullptr) return;
    const bool isWritten = status == TESK_OK || status == TESK_CUT;
    result->stream_bytes = isWritten || status == TESK_BUFFER_TOO_SMALL ? request.streamBytes : 0;
    result->loss = isWritten || status == TESK_NOT_RESTORABLE ? request.loss : TESK_LOSS_NONE;
    result->rescue = isWritten ? request.rescue : 0;
}

tesk_status compressTo(tesk_codec* codec, const tesk_image* image, const void* pixels,
                       std::size_t strideBytes, std::size_t budgetBytes, IStreamPlace& place,
                       tesk_result* result) {
    if (!clearResult(result)) return TESK_INVALID_ARGUMENT;
    if (codec == nullptr || image == nullptr || !isUnderstood(*image)) return TESK_INVALID_ARGUMENT;
    if (budgetBytes != 0 && budgetBytes < sizeof(TKHeader)) return TESK_INVALID_ARGUMENT;
    if (codec->isStopped()) return TESK_STOPPED;

    TKHeader header;
    if (const tesk_status status = checkImage(*image, header); status != TESK_OK) return status;
    const std::size_t stride = strideOrDefault(strideBytes, header);
    const bool hasPixels = pixels != nullptr || header.rawBytes() == 0;
    if (stride == 0 || !hasPixels) return TESK_INVALID_ARGUMENT;
    if (const tesk_status status = checkPixels(*codec, header); status != TESK_OK) return status;

    const CStopRequest stop(codec->stopRequested);
    CompressRequest request{*codec, stop, header, pixels, stride, budgetBytes, place};
    const tesk_status status =
        runCall(*codec, result, [&](CCallMemory& memory) { return compressInto(request, memory); });
    if (status != TESK_OK && status != TESK_CUT) place.discard(*codec);
    report(request, status, result);
    return status;
}

}  // namespace
}  // namespace qmx

tesk_status tesk_compress(tesk_codec* codec, const tesk_image* image, const void* pixels,
                          size_t rowStrideBytes, size_t budgetBytes, void* out, size_t outBytes,
                          tesk_result* result) {
    qmx::CCallerBuffer buffer(out, out == nullptr ? 0 : outBytes);
    return qmx::compressTo(codec, image, pixels, rowStrideBytes, budgetBytes, buffer, result);
}

tesk_status tesk_compress_to_block(tesk_codec* codec, const tesk_image* image, const void* pixels,
                                   size_t rowStrideBytes, size_t budgetBytes, void** block,
                                   tesk_result* result) {
    if (block == nullptr) return TESK_INVALID_ARGUMENT;
    *block = nullptr;
    qmx::COutputBlock place(block);
    return qmx::compressTo(codec, image, pixels, rowStrideBytes, budgetBytes, place, result);
}
