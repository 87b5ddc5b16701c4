// The call of the C interface that decompresses.

#include "api/CodecHandle.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"
#include "wavelet/CWaveletDecoder.h"
#include "wavelet/OutputConversion.h"

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
tesk_status writePixels(const DecompressRequest& request, const CImageData<T>& image,
                        int limitBits) {
    if (image.x == 0) return TESK_OK;  // out may then be null, which takes no offset
    const SampleLimit<T> limit(limitBits);
    unsigned char* row = request.out;
    for (int r = 0; r < image.y; ++r, row += request.strideBytes) {
        if (request.codec.isStopped()) return TESK_STOPPED;
        convertRow(image, r, request.header.bytesPerPixel, limit, row);
    }
    return TESK_OK;
}

template <class T>
tesk_status decompressImage(const DecompressRequest& request, CCallMemory& memory) {
    const TKHeader& header = request.header;
    if (!memory.allows(CImageData<T>::storageBytes(header.xSize, header.ySize, header.planes())))
        return TESK_LIMIT_EXCEEDED;
    CImageData<T> image(header.xSize, header.ySize, header.planes(), &memory);
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false, &memory);
    decoder.watch(request.codec.stopRequested);

    CBitReader reader(request.stream, request.streamBytes);
    const int result = decoder.readWavelet(reader, 0);
    if (request.codec.isStopped()) return TESK_STOPPED;
    if (!isUsable(result)) return TESK_INVALID_STREAM;
    decoder.untransform();
    // Only a stream that ended early can leave the range of its samples by itself.
    const bool isCut = result == kCut;
    const tesk_status status = writePixels(request, image, isCut ? header.bitsPerPixel : 0);
    return status == TESK_OK && isCut ? TESK_CUT : status;
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
        return qmx::dispatchSamples(
            header, qmx::MostBitsOfShort::inMemory,
            [&]<class T, class P>() { return qmx::decompressImage<T>(request, memory); },
            [] { return TESK_UNSUPPORTED_FORMAT; });
    });
}
