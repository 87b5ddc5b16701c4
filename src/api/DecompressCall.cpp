// The call of the C interface that decompresses.

#include "api/CodecHandle.h"
#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"
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

/// Writes rows of an image to the caller's memory.
template <class T>
class CPixelRows final : public IRowSink<T> {
public:
    CPixelRows(const DecompressRequest& decompressRequest, int result)
        : request(decompressRequest),
          // Only a stream that ended early can leave the range of its samples by itself.
          limit(result == kCut ? request.header.bitsPerPixel : 0) {}

    bool take(const CImageData<T>& rows, int slot, int r) override {
        if (request.codec.isStopped()) return false;
        convertRow(rows, slot, request.header.bytesPerPixel, limit,
                   request.out + static_cast<std::size_t>(r) * request.strideBytes);
        return true;
    }

private:
    const DecompressRequest& request;
    SampleLimit<T> limit;
};

template <class T>
tesk_status decompressByRows(const DecompressRequest& request, CWaveletDecoder<T>& decoder,
                             CBitReader& reader) {
    const int result = decoder.readSections(reader);
    if (request.codec.isStopped()) return TESK_STOPPED;
    if (!isUsable(result)) return TESK_INVALID_STREAM;
    CPixelRows<T> pixels(request, result);
    if (!decoder.restoreRows(pixels)) return TESK_STOPPED;
    return result == kCut ? TESK_CUT : TESK_OK;
}

template <class T>
tesk_status decompressPlanes(const DecompressRequest& request, CWaveletDecoder<T>& decoder,
                             CBitReader& reader) {
    CImageData<T>& image = decoder.getImage();
    image.allocate();
    const int result = decoder.readWavelet(reader, 0);
    if (request.codec.isStopped()) return TESK_STOPPED;
    if (!isUsable(result)) return TESK_INVALID_STREAM;
    decoder.untransform();
    CPixelRows<T> pixels(request, result);
    // Without columns the output may be null, which takes no offset.
    for (int r = 0; r < image.y && image.x != 0; ++r)
        if (!pixels.take(image, r, r)) return TESK_STOPPED;
    return result == kCut ? TESK_CUT : TESK_OK;
}

template <class T>
tesk_status decompressImage(const DecompressRequest& request, CCallMemory& memory) {
    const TKHeader& header = request.header;
    if (!memory.allows(leastBytes(header))) return TESK_LIMIT_EXCEEDED;
    CImageData<T> image(header.xSize, header.ySize, header.planes(), &memory, {});
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&image, &filter, false, &memory);
    decoder.watch(request.codec.stopRequested);

    CBitReader reader(request.stream, request.streamBytes);
    return decoder.gainsByRows() ? decompressByRows(request, decoder, reader)
                                 : decompressPlanes(request, decoder, reader);
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
