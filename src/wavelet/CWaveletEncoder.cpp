#include "wavelet/CWaveletEncoder.h"

#include "wavelet/CForwardSweep.h"

namespace qmx {

template <class T>
CWaveletEncoder<T>::CWaveletEncoder(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth,
                                    std::pmr::memory_resource* workMemory)
    : CWavelet<T>(imageData, lineFilter, ownsBoth),
      memory(workMemory),
      streams(makeObject<EncoderStreams<T>>(memory, memory)) {}

template <class T>
CWaveletEncoder<T>::~CWaveletEncoder() = default;

template <class T>
void CWaveletEncoder<T>::transform() {
    if (this->canSweep()) return sweepPlanes();
    for (int p = 0; p < this->image->planes && !this->isKilled(); ++p)
        transformPlane(p);
}

/// The same as transformPlane on all planes with the 5/3 filter.
template <class T>
void CWaveletEncoder<T>::sweepPlanes() {
    if (this->isKilled()) return;
    CLevelLines<T> lines(*this->image, this->levels, memory);
    for (int p = 0; p < this->image->planes; ++p) {
        lines.setPlane(this->image->plane[p]);
        CForwardSweep<T> sweep(lines);
        for (int r = 0; r < this->image->y && !this->isKilled(); ++r)
            sweep.takeRow(r);
    }
}

template <class T>
void CWaveletEncoder<T>::transformPlane(int p) {
    for (int level = 0; level < this->levels && !this->isKilled(); ++level) {
        const LevelGeometry geometry = this->levelAt(1 << level);
        const auto step = static_cast<unsigned long>(geometry.step);
        for (int r = 0; r < geometry.height; r += geometry.step)
            this->filter->transform(this->image->row(p, r), geometry.samplesPerRow(), step);
        this->forEachColumnBatch(p, geometry, [&](T* first, int columns) {
            this->filter->transformMul(first, geometry.samplesPerColumn(),
                                       static_cast<unsigned long>(geometry.strideSamples) * step,
                                       columns, step);
        });
    }
}

template class CWaveletEncoder<short>;
template class CWaveletEncoder<int>;

}  // namespace qmx
