#include "container/Comparison.h"

#include "bitstream/CBitReader.h"
#include "bitstream/Memory.h"
#include "bitstream/Status.h"
#include "coding/decode/DecodeRows.h"
#include "image/PixelRows.h"

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
        return job.pixels.isSameRow(r, decodedRow.get(), rowBytes);
    }

private:
    const ImageJob& job;
    CSampleLimit<T> limit;
    std::size_t rowBytes;
    MemoryArray<unsigned char> decodedRow;
};

template <class T>
Comparison compareWith(const ImageJob& job, const WrittenStream& stream) {
    CReceivedSections<T> sections(shapeOf(job.header), job.memory);
    CBitReader reader(stream.bytes, stream.sizeBytes);
    const int result = sections.read(reader, 0, job.stop);
    if (!isUsable(result)) return {result, false};
    CRowComparison<T> comparison(job, limitOf<T>(result, job.header));
    const bool isSame = decodeRows(sections, comparison, {0, job.stop});
    return {job.stop.isSet() ? kSuspended : result, isSame};
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
    const auto restoresIn = [&](MostBitsOfShort profile) {
        const Comparison found = decodeAndCompare(job, profile, stream);
        return found.result == kComplete && found.isSame;
    };
    // The profiles differ for one number of bits.
    const bool isAmbiguous = job.header.bytesPerPixel == 2 &&
                             job.header.bitsPerPixel == static_cast<int>(MostBitsOfShort::inFiles);
    return restoresIn(MostBitsOfShort::inMemory) &&
           (!isAmbiguous || restoresIn(MostBitsOfShort::inFiles));
}

}  // namespace qmx
