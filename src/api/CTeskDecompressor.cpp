#include "api/CTeskDecompressor.h"

#include <memory>

#include "bitstream/CBitReader.h"
#include "bitstream/Memory.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "container/CPixelSink.h"
#include "container/CoefficientDispatch.h"
#include "container/ImageJob.h"

namespace qmx {

// Part of the binary interface: programs make, derive from and delete such objects.
static_assert(sizeof(void*) != 8 || sizeof(CTeskDecompressor) == 64);

CTeskDecompressor::CTeskDecompressor(const unsigned char* data, unsigned long lengthBytes)
    : stream(nullptr), streamBytes(0), status(kNotRun) {
    if (lengthBytes <= sizeof(TKHeader)) return;
    TKHeader& header = *this;
    std::memcpy(&header, data, sizeof header);
    stream = data + sizeof header;
    streamBytes = lengthBytes - sizeof header;
}

CTeskDecompressor::~CTeskDecompressor() = default;

/// Sets the status. Returns: it, or -1 when out is too small.
template <class T>
int CTeskDecompressor::decode(void* out, unsigned long sizeBytes) {
    CReceivedSections<T> sections(shapeOf(*this), std::pmr::new_delete_resource());
    CBitReader reader(stream, streamBytes);
    const CStopRequest kill(isKilled);
    const CStopRequest stop(isStopped);
    const int result = sections.read(reader, 0, kill);
    if (!isUsable(result)) return status = result;
    if (ySize != 0 && stop.isSet()) return status = kSuspended;
    if (sizeBytes < rawBytes()) {
        status = result;
        return kBufferTooSmall;
    }
    // A call that is stopped has written nothing to out.
    const std::size_t imageBytes = sizeOfBytes(rawBytes());
    const auto staging = std::make_unique_for_overwrite<unsigned char[]>(imageBytes);
    CPixelSink<T> pixels(*this, limitOf<T>(result, *this), staging.get(), rawRowBytes());
    if (!decodeRows(sections, pixels, {0, stop})) return status = kSuspended;
    if (imageBytes != 0) std::memcpy(out, staging.get(), imageBytes);
    return status = result;
}

int CTeskDecompressor::decompress(void* out, unsigned long sizeBytes) {
    if (status != kNotRun && status != kKilled) return status;
    return dispatchCoefficients(
        *this, MostBitsOfShort::inMemory, [&]<class T>() { return decode<T>(out, sizeBytes); },
        [this] { return status = kInvalidSection; });
}

void CTeskDecompressor::stop() {
    isStopped.store(true, std::memory_order_relaxed);
}

void CTeskDecompressor::kill() {
    isKilled.store(true, std::memory_order_relaxed);
    stop();
}

}  // namespace qmx
