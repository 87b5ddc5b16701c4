#include "container/Comparison.h"

#include "bitstream/CBitReader.h"
#include "bitstream/Memory.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "container/NarrowSamples.h"
#include "image/PixelRows.h"
#include "image/UsedBits.h"

namespace qmx {
namespace {

/// Wants rows as long as they are those of a job.
template <class T>
class CRowComparison final : public IRowSink<T> {
public:
    CRowComparison(const ImageJob& imageJob, const CSampleLimit<T>& sampleLimit)
        : job(imageJob),
          limit(sampleLimit),
          rowBytes(job.header.rawRowBytes()),
          decodedRow(makeArray<unsigned char>(rowBytes, job.memory)) {}

    bool take(const CImageData<T>& rows, int slot, int r) override {
        if (rowBytes == 0) return true;
        storeRow(rows, slot, job.header.bytesPerPixel, limit, decodedRow.get());
        if (job.header.bytesPerPixel == 2) used |= usedBitsOf(decodedRow.get(), rowBytes, 2);
        return job.pixels.isSameRow(r, decodedRow.get(), rowBytes);
    }

    unsigned usedBits() const { return used; }

private:
    const ImageJob& job;
    CSampleLimit<T> limit;
    std::size_t rowBytes;
    MemoryArray<unsigned char> decodedRow;
    unsigned used = 0;
};

template <class T>
Comparison compareWith(const ImageJob& job, const WrittenStream& stream) {
    CReceivedSections<T> sections(shapeOf(job.header), job.memory);
    CBitReader reader(stream.bytes, stream.sizeBytes);
    const int result = sections.read(reader, 0, job.stop);
    if (!isUsable(result)) return {result, false};
    CRowComparison<T> comparison(job, limitOf<T>(result, job.header));
    const bool isSame = decodeRows(sections, comparison, {0, job.stop});
    return {job.stop.isSet() ? kSuspended : result, isSame, comparison.usedBits()};
}

bool isRestored(const Comparison& found) {
    return found.result == kComplete && found.isSame;
}

}  // namespace

Comparison decodeAndCompare(const ImageJob& job, MostBitsOfShort profile,
                            const WrittenStream& stream) {
    return dispatchCoefficients(
        job.header, profile, [&]<class T>() { return compareWith<T>(job, stream); },
        [] {
            return Comparison{kInvalidSection, false};
        });
}

bool restoresExactly(const ImageJob& job, const WrittenStream& stream) {
    if (mayBeNarrow(job.header, stream.bytes, stream.sizeBytes)) {
        const Comparison found = decodeAndCompare(job, MostBitsOfShort::ofNarrowSamples, stream);
        if (isRestored(found) && found.usedBits < kNarrowSamples) return true;
    }
    const auto restoresIn = [&](MostBitsOfShort profile) {
        return isRestored(decodeAndCompare(job, profile, stream));
    };
    // The profiles differ for one number of bits.
    const bool isAmbiguous = job.header.bytesPerPixel == 2 &&
                             job.header.bitsPerPixel == static_cast<int>(MostBitsOfShort::inFiles);
    return restoresIn(MostBitsOfShort::inMemory) &&
           (!isAmbiguous || restoresIn(MostBitsOfShort::inFiles));
}

}  // namespace qmx
