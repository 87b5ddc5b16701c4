// The call of the C interface that decompresses.

#include "api/CodecHandle.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "container/CPixelSink.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"

namespace qmx {
namespace {

struct DecompressRequest {
    const tesk_codec& codec;
    TKHeader header;
    const unsigned char* stream;
    std::size_t streamBytes;
    unsigned char* out;
    std::size_t strideBytes;
};

/// Returns: bytes from the first pixel to the last.
std::size_t outputExtent(const TKHeader& header, std::size_t strideBytes) {
    if (header.rawBytes() == 0) return 0;
    return strideBytes * (header.ySize - std::size_t{1}) + header.rawRowBytes();
}

template <class T>
tesk_status decompressImage(const DecompressRequest& request, CCallMemory& memory) {
    const TKHeader& header = request.header;
    if (!memory.allows(leastBytes(header))) return TESK_LIMIT_EXCEEDED;
    const CStopRequest stop(request.codec.stopRequested);
    CReceivedSections<T> sections(shapeOf(header), &memory);
    CBitReader reader(request.stream, request.streamBytes);
    const int result = sections.read(reader, 0, stop);
    if (result == kKilled) return TESK_STOPPED;
    if (!isUsable(result)) return TESK_INVALID_STREAM;
    CPixelSink<T> pixels(header, limitOf<T>(result, header), request.out, request.strideBytes);
    if (!decodeRows(sections, pixels, {0, stop})) return TESK_STOPPED;
    return result == kCut ? TESK_CUT : TESK_OK;
}

}  // namespace
}  // namespace qmx

tesk_status tesk_decompress(tesk_codec* codec, const void* stream, size_t streamBytes, void* out,
                            size_t outBytes, size_t rowStrideBytes, tesk_result* result) {
    if (!qmx::clearResult(result)) return TESK_INVALID_ARGUMENT;
    if (codec == nullptr || stream == nullptr || (out == nullptr && outBytes != 0))
        return TESK_INVALID_ARGUMENT;
    if (codec->isStopped()) return TESK_STOPPED;

    qmx::TKHeader header;
    tesk_status status = qmx::readHeader(stream, streamBytes, header);
    if (status != TESK_OK) return status;
    const std::size_t stride = qmx::strideOrDefault(rowStrideBytes, header);
    if (stride == 0) return TESK_INVALID_ARGUMENT;
    status = qmx::checkPixels(*codec, header);
    if (status != TESK_OK) return status;
    if (qmx::outputExtent(header, stride) > outBytes) return TESK_BUFFER_TOO_SMALL;

    const auto* bytes = static_cast<const unsigned char*>(stream);
    const qmx::DecompressRequest request{*codec,
                                         header,
                                         bytes + sizeof header,
                                         streamBytes - sizeof header,
                                         static_cast<unsigned char*>(out),
                                         stride};
    return qmx::runCall(*codec, result, [&](qmx::CCallMemory& memory) {
        return qmx::dispatchCoefficients(
            header, qmx::MostBitsOfShort::inMemory,
            [&]<class T>() { return qmx::decompressImage<T>(request, memory); },
            [] { return TESK_UNSUPPORTED_FORMAT; });
    });
}
