#include "container/ExactCheck.h"

#include <cstring>

#include "bitstream/CBitReader.h"
#include "coding/decode/CWaveletDecoder.h"
#include "wavelet/OutputConversion.h"

namespace qmx {
namespace {

/// Wants rows as long as they are those of a job.
template <class T>
class CRowComparison final : public IRowSink<T> {
public:
    explicit CRowComparison(const ExactJob& exactJob)
        : job(exactJob),
          rowBytes(job.header.rawRowBytes()),
          decodedRow(makeArray<unsigned char>(rowBytes, job.memory)) {}

    bool take(const CImageData<T>& rows, int slot, int r) override {
        if (rowBytes == 0) return true;
        convertRow(rows, slot, job.header.bytesPerPixel, SampleLimit<T>(0), decodedRow.get());
        return std::memcmp(job.row(r), decodedRow.get(), rowBytes) == 0;
    }

private:
    const ExactJob& job;
    std::size_t rowBytes;
    MemoryArray<unsigned char> decodedRow;
};

template <class T>
bool restoresWith(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes) {
    CImageData<T> decoded(job.header.xSize, job.header.ySize, job.header.planes(), job.memory, {});
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&decoded, &filter, false, job.memory);
    if (job.stop != nullptr) decoder.watch(*job.stop);
    CBitReader reader(stream, streamBytes);
    CRowComparison<T> comparison(job);
    if (decoder.gainsByRows())
        return decoder.readSections(reader) == kComplete && decoder.restoreRows(comparison);
    decoded.allocate();
    if (decoder.readWavelet(reader, 0) != kComplete) return false;
    decoder.untransform();
    for (int r = 0; r < decoded.y; ++r)
        if (job.isStopped() || !comparison.take(decoded, r, r)) return false;
    return true;
}

bool restoresIn(MostBitsOfShort profile, const ExactJob& job, const unsigned char* stream,
                std::size_t streamBytes) {
    return dispatchSamples(
        job.header, profile,
        [&]<class T, class P>() { return restoresWith<T>(job, stream, streamBytes); },
        [] { return false; });
}

}  // namespace

bool restoresExactly(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes) {
    // The profiles differ for one number of bits.
    const bool isAmbiguous = job.header.bytesPerPixel == 2 &&
                             job.header.bitsPerPixel == static_cast<int>(MostBitsOfShort::inFiles);
    return restoresInMemory(job, stream, streamBytes) &&
           (!isAmbiguous || restoresIn(MostBitsOfShort::inFiles, job, stream, streamBytes));
}

bool restoresInMemory(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes) {
    return restoresIn(MostBitsOfShort::inMemory, job, stream, streamBytes);
}

}  // namespace qmx
