#include "api/CTeskDecompressor.h"

#include "bitstream/CBitReader.h"
#include "bitstream/Status.h"
#include "coding/decode/CWaveletDecoder.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {

CTeskDecompressor::CTeskDecompressor(const unsigned char* data, unsigned long lengthBytes)
    : status(kNotRun), stream(nullptr), streamBytes(0) {
    if (lengthBytes <= sizeof(TKHeader)) return;
    TKHeader& header = *this;
    std::memcpy(&header, data, sizeof header);
    stream = data + sizeof header;
    streamBytes = lengthBytes - sizeof header;
    dispatchSamples(
        header, MostBitsOfShort::inMemory, [&]<class T, class P>() { setup<T>(); }, [] {});
}

template <class T>
void CTeskDecompressor::setup() {
    auto image = std::make_unique<CImageData<T>>(xSize, ySize, planes());
    auto filter = std::make_unique<CFilter5_3<T>>();
    // The decoder owns both from its constructor on; its own storage is there before they are let go.
    decoder.reset(new CWaveletDecoder<T>(image.release(), filter.release(), true));
}

CTeskDecompressor::~CTeskDecompressor() = default;

void CTeskDecompressor::readCoefficients() {
    // A decoder that was killed begins again.
    reader = std::make_unique<CBitReader>(stream, streamBytes);
    status = kCut;
    try {
        status = decoder->readWavelet(*reader, 0);
    } catch (int) {
        // The data ran out.
    }
}

int CTeskDecompressor::decompress(void* out, unsigned long sizeBytes) {
    if (status != kNotRun && status != kKilled) return status;
    if (decoder == nullptr) return status = kInvalidSection;
    readCoefficients();
    if (!isUsable(status)) return status;
    if (sizeBytes < rawBytes()) return kBufferTooSmall;
    // Quirk 17: a kill from here on leaves the image unfinished and the status as it is.
    decoder->untransform();
    // Only a stream that ended early can leave the range of its samples by itself.
    decoder->convertAndCopyToT(out, bytesPerPixel, status == kCut ? bitsPerPixel : 0);
    return status;
}

void CTeskDecompressor::stop() {
    if (decoder != nullptr) decoder->stop();
}

void CTeskDecompressor::kill() {
    if (decoder != nullptr) decoder->kill();
}

}  // namespace qmx
