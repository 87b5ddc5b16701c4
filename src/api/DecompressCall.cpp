// The calls of the C interface that decompress a picture at once.

#include <optional>

#include "api/CDecompression.h"
#include "api/CodecHandle.h"
#include "api/ReducedImage.h"
#include "container/NarrowSamples.h"
#include "image/UsedBits.h"

namespace qmx {
namespace {

/// Returns: bytes from the first pixel to the last.
std::size_t outputExtent(const TKHeader& header, std::size_t strideBytes) {
    if (header.rawBytes() == 0) return 0;
    return strideBytes * (header.ySize - std::size_t{1}) + header.rawRowBytes();
}

/// Returns: TESK_OK or TESK_STOPPED; nothing when the stream takes the coefficients that its header asks for.
std::optional<tesk_status> decompressNarrow(const StreamJob& job, unsigned char* out,
                                            std::size_t strideBytes) {
    // The samples of reduced pictures are limited, and so is what can be seen of them.
    if (job.reduction != 0 || out == nullptr) return std::nullopt;
    if (!mayBeNarrow(job.header, job.stream, job.streamBytes)) return std::nullopt;
    CDecompression decompression(job, MostBitsOfShort::ofNarrowSamples);
    if (decompression.open() != TESK_OK) return std::nullopt;
    for (std::size_t r = 0; decompression.rowsLeft() != 0; ++r) {
        unsigned char* const row = out + r * strideBytes;
        const tesk_status status = decompression.store(row, strideBytes, 1);
        if (status != TESK_OK) return status;
        if (usedBitsOf(row, job.header.rawRowBytes(), 2) >= kNarrowSamples) return std::nullopt;
    }
    return TESK_OK;
}

tesk_status decompressInto(const StreamJob& job, unsigned char* out, std::size_t strideBytes) {
    if (const auto status = decompressNarrow(job, out, strideBytes)) return *status;
    CDecompression decompression(job);
    const tesk_status status = decompression.open();
    if (status != TESK_OK && status != TESK_CUT) return status;
    const tesk_status stored = decompression.store(out, strideBytes, decompression.rowsLeft());
    return stored == TESK_OK ? status : stored;
}

/// Sets picture to the header of the picture at 1 : 2^levels. Returns: as reduceShape.
tesk_status reduceHeader(const TKHeader& header, std::uint32_t levels, TKHeader& picture) {
    ImageShape shape = shapeOf(header);
    const tesk_status status = reduceShape(shape, levels);
    picture = makeHeader(header.bytesPerPixel, header.bitsPerPixel, shape.width, shape.height);
    return status;
}

}  // namespace
}  // namespace qmx

tesk_status tesk_decompress(tesk_codec* codec, const void* stream, size_t streamBytes, void* out,
                            size_t outBytes, size_t rowStrideBytes, tesk_result* result) {
    return tesk_decompress_reduced(codec, stream, streamBytes, 0, out, outBytes, rowStrideBytes,
                                   result);
}

tesk_status tesk_decompress_reduced(tesk_codec* codec, const void* stream, size_t streamBytes,
                                    uint32_t levels, void* out, size_t outBytes,
                                    size_t rowStrideBytes, tesk_result* result) {
    if (!qmx::clearResult(result)) return TESK_INVALID_ARGUMENT;
    if (out == nullptr && outBytes != 0) return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    tesk_status status = qmx::checkDecompression(codec, stream, streamBytes, header);
    if (status != TESK_OK) return status;
    qmx::TKHeader picture;
    status = qmx::reduceHeader(header, levels, picture);
    if (status != TESK_OK) return status;
    if (!qmx::hasAddresses(picture)) return TESK_OUT_OF_MEMORY;
    const std::size_t stride = qmx::strideOrDefault(rowStrideBytes, picture);
    if (stride == 0) return TESK_INVALID_ARGUMENT;
    status = qmx::checkPixels(*codec, picture);
    if (status != TESK_OK) return status;
    if (qmx::outputExtent(picture, stride) > outBytes) return TESK_BUFFER_TOO_SMALL;

    const qmx::CStopRequest stop(codec->stopRequested);
    return qmx::runCall(*codec, result, [&](qmx::CCallMemory& memory) {
        if (!memory.allows(qmx::leastBytes(picture))) return TESK_LIMIT_EXCEEDED;
        const qmx::StreamJob job =
            qmx::jobOf(header, stream, streamBytes, memory, stop, static_cast<int>(levels));
        return qmx::decompressInto(job, static_cast<unsigned char*>(out), stride);
    });
}
