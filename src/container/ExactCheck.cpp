#include "container/ExactCheck.h"

#include <cstring>

#include "bitstream/CBitReader.h"
#include "wavelet/CWaveletDecoder.h"
#include "wavelet/OutputConversion.h"

namespace qmx {
namespace {

template <class T>
bool hasSamplesOf(const ExactJob& job, const CImageData<T>& decoded) {
    const auto rowBytes = static_cast<std::size_t>(job.header.rawRowBytes());
    const auto decodedRow = makeArray<unsigned char>(rowBytes, job.memory);
    const SampleLimit<T> noLimit(0);
    for (int r = 0; r < job.header.ySize && rowBytes != 0; ++r) {
        convertRow(decoded, r, job.header.bytesPerPixel, noLimit, decodedRow.get());
        if (std::memcmp(job.row(r), decodedRow.get(), rowBytes) != 0) return false;
    }
    return true;
}

template <class T>
bool restoresWith(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes) {
    CImageData<T> decoded(job.header.xSize, job.header.ySize, job.header.planes(), job.memory);
    CFilter5_3<T> filter;
    CWaveletDecoder<T> decoder(&decoded, &filter, false, job.memory);
    if (job.stop != nullptr) decoder.watch(*job.stop);
    CBitReader reader(stream, streamBytes);
    if (decoder.readWavelet(reader, 0) != kComplete) return false;
    decoder.untransform();
    return !job.isStopped() && hasSamplesOf(job, decoded);
}

}  // namespace

bool restoresExactly(const ExactJob& job, const unsigned char* stream, std::size_t streamBytes) {
    const auto restoresIn = [&](MostBitsOfShort profile) {
        return dispatchSamples(
            job.header, profile,
            [&]<class T, class P>() { return restoresWith<T>(job, stream, streamBytes); },
            [] { return false; });
    };
    // The profiles differ for one number of bits.
    const bool isAmbiguous = job.header.bytesPerPixel == 2 &&
                             job.header.bitsPerPixel == static_cast<int>(MostBitsOfShort::inFiles);
    return restoresIn(MostBitsOfShort::inMemory) &&
           (!isAmbiguous || restoresIn(MostBitsOfShort::inFiles));
}

}  // namespace qmx
