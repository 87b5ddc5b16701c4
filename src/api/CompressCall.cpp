// The calls of the C interface that compress an image at once.

#include "api/CCompression.h"
#include "api/COutputBlock.h"
#include "api/CodecHandle.h"

namespace qmx {
namespace {

class CCallerBuffer final : public IStreamPlace {
public:
    CCallerBuffer(void* buffer, std::size_t bufferBytes) : bytes(buffer), roomBytes(bufferBytes) {}
    unsigned char* take(std::size_t sizeBytes, std::pmr::memory_resource&) override {
        return sizeBytes <= roomBytes ? static_cast<unsigned char*>(bytes) : nullptr;
    }

private:
    void* bytes;
    std::size_t roomBytes;
};

tesk_status compressTo(tesk_codec* codec, const tesk_image* image, const void* pixels,
                       std::size_t strideBytes, std::size_t budgetBytes, IStreamPlace& place,
                       tesk_result* result) {
    if (!clearResult(result)) return TESK_INVALID_ARGUMENT;
    TKHeader header;
    tesk_status status = checkCompression(codec, image, budgetBytes, header);
    if (status != TESK_OK) return status;
    if (!hasAddresses(header)) return TESK_OUT_OF_MEMORY;
    const std::size_t stride = strideOrDefault(strideBytes, header);
    const bool hasPixels = pixels != nullptr || header.rawBytes() == 0;
    if (stride == 0 || !hasPixels) return TESK_INVALID_ARGUMENT;
    status = checkPixels(*codec, header);
    if (status != TESK_OK) return status;

    const CStopRequest stop(codec->stopRequested);
    CompressRequest request{codec->flags, budgetBytes, place};
    status = runCall(*codec, result, [&](CCallMemory& memory) {
        if (!memory.allows(leastBytes(header))) return TESK_LIMIT_EXCEEDED;
        CPixelsInMemory rows(pixels, stride);
        ImageJob job{header, rows, &memory, stop};
        return compressWhole(job, request);
    });
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
    qmx::COutputBlock place(block);
    const tesk_status status =
        qmx::compressTo(codec, image, pixels, rowStrideBytes, budgetBytes, place, result);
    return place.keepIfUsable(status, codec);
}
