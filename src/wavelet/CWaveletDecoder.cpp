#include "wavelet/CWaveletDecoder.h"

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
    for (int p = 0; p < this->image->planes && !this->isKilled(); ++p)
        untransformPlane(p);
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

template class CWaveletDecoder<short>;
template class CWaveletDecoder<int>;

}  // namespace qmx
