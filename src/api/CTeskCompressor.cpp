#include "api/CTeskCompressor.h"

#include <cstdlib>

#include "api/CBitTeskWriter.h"
#include "api/CompressorLoss.h"
#include "bitstream/CAligned.h"
#include "bitstream/Status.h"
#include "coding/encode/CWaveletEncoder.h"
#include "container/Budget.h"
#include "container/RawPixels.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {
namespace {

constexpr unsigned long kBlockAlignmentBytes = 8;

}  // namespace

CTeskCompressor::CTeskCompressor(int width, int height, int sampleBits, int pixelBytes,
                                 const void* data, unsigned long budgetBytes, bool ownsBlock)
    : CTeskHeader(makeHeader(pixelBytes, sampleBits, width, height)), status(kNotRun) {
    const bool hasRoomForHeader = budgetBytes == 0 || budgetBytes >= sizeof(TKHeader);
    if (!hasRoomForHeader) {
        status = kCut;
        return;
    }
    dispatchSamples(
        *this, MostBitsOfShort::inMemory,
        [&]<class T, class P>() {
            const std::uint64_t boundBytes = completeStreamBoundBytes(*this, 8 * sizeof(T));
            writer = std::make_unique<CBitTeskWriter>(this, budgetBytes, boundBytes, ownsBlock);
            setup<T, P>(data);
        },
        [] {});
}

template <class T, class P>
void CTeskCompressor::setup(const void* data) {
    auto image = std::make_unique<CImageData<T>>(xSize, ySize, planes());
    loadPixels<P>(*image, data, rawRowBytes());
    auto filter = std::make_unique<CFilter5_3<T>>();
    // The encoder owns both from its constructor on; its own storage is there before they are let go.
    encoder.reset(new CWaveletEncoder<T>(image.release(), filter.release(), true));
    encoder->transform();
}

CTeskCompressor::~CTeskCompressor() = default;

int CTeskCompressor::compress() {
    if (status != kNotRun && status != kKilled) return status;
    if (encoder == nullptr) return status = kInvalidSection;
    status = kCut;
    try {
        status = encoder->writeWavelet(*writer, 0);
    } catch (int) {
        // The budget is spent.
    }
    return status;
}

void CTeskCompressor::stop() {
    if (encoder != nullptr) encoder->stop();
}

void CTeskCompressor::kill() {
    if (encoder != nullptr) encoder->kill();
}

void* CTeskCompressor::allocBlock(unsigned long sizeBytes) {
    return allocateAligned(kBlockAlignmentBytes, sizeBytes);
}

void CTeskCompressor::freeBlock(void* block) {
    std::free(block);
}

unsigned char* CTeskCompressor::getBlock() const {
    return writer != nullptr ? writer->getHeader() : nullptr;
}

unsigned long CTeskCompressor::getStreamSize() const {
    return getBlock() != nullptr ? sizeof(TKHeader) + writer->getStoredBytes() : 0;
}

LossReport findLoss(CTeskCompressor& compressor, bool hasRate) {
    const TKHeader& header = compressor;
    StreamFate fate;
    fate.stream = compressor.getBlock() + sizeof header;
    fate.streamBytes = compressor.writer->getStoredBytes();
    LossReport report = dispatchSamples(
        header, MostBitsOfShort::inMemory,
        [&]<class T, class P>() {
            auto& encoder = static_cast<CWaveletEncoder<T>&>(*compressor.encoder);
            fate.isLossAskedFor = hasRate && fate.streamBytes < (encoder.getStreamBits() + 7) / 8;
            return findLoss(encoder, header, fate);
        },
        [] { return LossReport{}; });
    // Decoders in memory take no header alone, though a header alone restores zeros elsewhere.
    const bool isHeaderAlone = fate.streamBytes == 0 && !hasRate;
    if (isHeaderAlone && report.loss == Loss::none) report.loss = Loss::cut;
    return report;
}

void CTeskCompressor::releaseBlock() {
    if (writer != nullptr) writer->releaseBlock();
}

}  // namespace qmx
