// Compression to the stream that the command line tool makes as well.

#include "api/CompressRequest.h"
#include "bitstream/CBitWriter.h"
#include "bitstream/Status.h"
#include "container/RawPixels.h"
#include "container/Restoration.h"
#include "container/SampleDispatch.h"
#include "wavelet/CFilter5_3.h"

namespace qmx {
namespace {

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
    const std::size_t completeBytes = completeBytesOf(encoder);
    const bool isCut = request.budgetBytes != 0 && request.budgetBytes < completeBytes;
    unsigned char* out = placeHeader(request, isCut ? request.budgetBytes : completeBytes, memory);
    if (out == nullptr) return TESK_BUFFER_TOO_SMALL;
    unsigned char* const stream = out + sizeof(TKHeader);
    const std::size_t bytesBehindHeader = request.streamBytes - sizeof(TKHeader);
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

}  // namespace

tesk_status runPlainCall(CompressRequest& request, CCallMemory& memory) {
    return dispatchSamples(
        request.header, MostBitsOfShort::inMemory,
        [&]<class T, class P>() { return compressImage<T, P>(request, memory); },
        [] { return TESK_UNSUPPORTED_FORMAT; });
}

}  // namespace qmx
