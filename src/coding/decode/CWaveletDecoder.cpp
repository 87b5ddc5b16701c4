#include "coding/decode/CWaveletDecoder.h"

#include "wavelet/CInverseSweep.h"
#include "wavelet/OutputConversion.h"

namespace qmx {

template <class T>
CWaveletDecoder<T>::CWaveletDecoder(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth,
                                    std::pmr::memory_resource* workMemory)
    : CWavelet<T>(imageData, lineFilter, ownsBoth),
      memory(workMemory),
      streams(makeObject<DecoderStreams<T>>(memory)) {}

template <class T>
CWaveletDecoder<T>::~CWaveletDecoder() = default;

template <class T>
void CWaveletDecoder<T>::untransform() {
    if (this->canSweep()) return sweepPlanes();
    for (int p = 0; p < this->image->planes && !this->isKilled(); ++p)
        untransformPlane(p);
}

/// The same as untransformPlane on all planes with the 5/3 filter.
template <class T>
void CWaveletDecoder<T>::sweepPlanes() {
    if (this->isKilled()) return;
    CLevelLines<T> lines(*this->image, this->levels, memory);
    for (int p = 0; p < this->image->planes; ++p) {
        lines.setPlane(this->image->plane[p]);
        CInverseSweep<T> sweep(lines);
        for (int r = 0; r < this->image->y && !this->isKilled(); ++r)
            sweep.restoreRow(r);
    }
}

template <class T>
void CWaveletDecoder<T>::untransformPlane(int p) {
    for (int s = coarsestInverseStep(this->levels); s >= 1 && !this->isKilled(); s /= 2) {
        const LevelGeometry geometry = this->levelAt(s);
        const auto step = static_cast<unsigned long>(geometry.step);
        this->forEachColumnBatch(p, geometry, [&](T* first, int columns) {
            this->filter->untransformMul(first, geometry.samplesPerColumn(),
                                         static_cast<unsigned long>(geometry.strideSamples) * step,
                                         columns, step);
        });
        for (int r = 0; r < geometry.height; r += geometry.step)
            this->filter->untransform(this->image->row(p, r), geometry.samplesPerRow(), step);
    }
}

template <class T>
void CWaveletDecoder<T>::convertAndCopyToT(void* out, int bytesPerPixel, int limitBits) {
    const CImageData<T>& samples = *this->image;
    const std::size_t rowBytes = outputRowBytes(samples, bytesPerPixel);
    if (rowBytes == 0) return;
    const SampleLimit<T> limit(limitBits);
    auto* row = static_cast<unsigned char*>(out);
    for (int r = 0; r < samples.y; ++r, row += rowBytes)
        convertRow(samples, r, bytesPerPixel, limit, row);
}

template class CWaveletDecoder<short>;
template class CWaveletDecoder<int>;

}  // namespace qmx
