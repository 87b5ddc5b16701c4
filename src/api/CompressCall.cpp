// The calls of the C interface that compress.

#include <algorithm>

#include "api/CodecHandle.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"
#include "container/RawPixels.h"
#include "container/Restoration.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/CWaveletEncoder.h"

namespace qmx {
namespace {

constexpr std::uint32_t kGreatestSide = 65535;

/// Where a stream goes once its size is known.
class IStreamPlace {
public:
    virtual ~IStreamPlace() = default;
    /// Returns: room for sizeBytes bytes, or null when they do not fit. Throws: std::bad_alloc.
    virtual unsigned char* take(std::size_t sizeBytes, CCallMemory& memory) = 0;
};

class CCallerBuffer final : public IStreamPlace {
public:
    CCallerBuffer(void* buffer, std::size_t bufferBytes) : bytes(buffer), roomBytes(bufferBytes) {}
    unsigned char* take(std::size_t sizeBytes, CCallMemory&) override {
        return sizeBytes <= roomBytes ? static_cast<unsigned char*>(bytes) : nullptr;
    }

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

private:
    void** block;
};

struct CompressRequest {
    const tesk_codec& codec;
    TKHeader header;
    const void* pixels;
    std::size_t strideBytes;
    std::size_t budgetBytes;
    IStreamPlace& place;
    std::size_t streamBytes = 0;
    tesk_loss loss = TESK_LOSS_NONE;
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

tesk_loss lossNumber(Loss loss) {
    switch (loss) {
        case Loss::none:
        case Loss::suspension:  // calls do not suspend
            return TESK_LOSS_NONE;
        case Loss::sideOfOne:
            return TESK_LOSS_SIDE_OF_ONE;
        case Loss::thinImage:
            return TESK_LOSS_THIN_IMAGE;
        case Loss::wrappedCoefficient:
            return TESK_LOSS_WRAPPED;
        case Loss::endlessRun:
            return TESK_LOSS_ENDLESS_RUN;
        case Loss::overlongSection:
            return TESK_LOSS_LONG_SECTION;
        case Loss::cut:
            return TESK_LOSS_BUDGET;
    }
    return TESK_LOSS_UNCHECKED;
}

/// Returns: what a complete stream loses, as far as there is memory to find out.
template <class T>
tesk_loss lossOf(CWaveletEncoder<T>& encoder, const TKHeader& header, const unsigned char* stream,
                 std::size_t streamBytes) {
    StreamFate fate;
    fate.stream = stream;
    fate.streamBytes = streamBytes;
    try {
        return lossNumber(findLoss(encoder, header, fate).loss);
    } catch (const std::bad_alloc&) {
        return TESK_LOSS_UNCHECKED;
    }
}

/// Writes the coded stream as far as the budget lets it.
template <class T>
tesk_status writeStream(CompressRequest& request, CWaveletEncoder<T>& encoder,
                        CCallMemory& memory) {
    const std::size_t completeBytes = sizeof(TKHeader) + (encoder.getStreamBits() + 7) / 8;
    const bool isCut = request.budgetBytes != 0 && request.budgetBytes < completeBytes;
    const std::size_t streamBytes = isCut ? request.budgetBytes : completeBytes;
    unsigned char* out = request.place.take(streamBytes, memory);
    request.streamBytes = streamBytes;
    if (out == nullptr) return TESK_BUFFER_TOO_SMALL;
    std::memcpy(out, &request.header, sizeof(TKHeader));
    unsigned char* const stream = out + sizeof(TKHeader);
    const std::size_t bytesBehindHeader = streamBytes - sizeof(TKHeader);
    CBitWriter writer(stream, bytesBehindHeader);
    try {
        encoder.writeStream(writer);
    } catch (int) {
        // The budget is spent.
    }
    request.loss =
        isCut ? TESK_LOSS_BUDGET : lossOf(encoder, request.header, stream, bytesBehindHeader);
    return isCut ? TESK_CUT : TESK_OK;
}

template <class T, class P>
tesk_status compressImage(CompressRequest& request, CCallMemory& memory) {
    const TKHeader& header = request.header;
    if (!memory.allows(CImageData<T>::storageBytes(header.xSize, header.ySize, header.planes())))
        return TESK_LIMIT_EXCEEDED;
    CImageData<T> image(header.xSize, header.ySize, header.planes(), &memory);
    CFilter5_3<T> filter;
    CWaveletEncoder<T> encoder(&image, &filter, false, &memory);
    encoder.watch(request.codec.stopRequested);

    loadPixels<P>(image, request.pixels, request.strideBytes);
    encoder.transform();
    const bool wasSuspended = encoder.codeCoefficients(0) == kSuspended;
    // What was stopped anywhere on the way is of no use.
    if (wasSuspended || request.codec.isStopped()) return TESK_STOPPED;
    return writeStream(request, encoder, memory);
}

tesk_status compressTo(tesk_codec* codec, const tesk_image* image, const void* pixels,
                       std::size_t strideBytes, std::size_t budgetBytes, IStreamPlace& place,
                       tesk_result* result) {
    if (!clearResult(result)) return TESK_INVALID_ARGUMENT;
    if (codec == nullptr || image == nullptr || !hasKnownSize(*image)) return TESK_INVALID_ARGUMENT;
    if (budgetBytes != 0 && budgetBytes < sizeof(TKHeader)) return TESK_INVALID_ARGUMENT;
    if (codec->isStopped()) return TESK_STOPPED;

    TKHeader header;
    if (const tesk_status status = checkImage(*image, header); status != TESK_OK) return status;
    const std::size_t stride = strideOrDefault(strideBytes, header);
    const bool hasPixels = pixels != nullptr || header.rawBytes() == 0;
    if (stride == 0 || !hasPixels) return TESK_INVALID_ARGUMENT;
    if (const tesk_status status = checkPixels(*codec, header); status != TESK_OK) return status;

    CompressRequest request{*codec, header, pixels, stride, budgetBytes, place};
    const tesk_status status = runCall(*codec, result, [&](CCallMemory& memory) {
        return dispatchSamples(
            header, MostBitsOfShort::inMemory,
            [&]<class T, class P>() { return compressImage<T, P>(request, memory); },
            [] { return TESK_UNSUPPORTED_FORMAT; });
    });
    if (result != nullptr) result->stream_bytes = request.streamBytes;
    if (result != nullptr) result->loss = request.loss;
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
