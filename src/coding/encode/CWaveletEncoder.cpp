#include "coding/encode/CWaveletEncoder.h"

#include "wavelet/CForwardSweep.h"
#include "wavelet/CLevelLines.h"

namespace qmx {
namespace {

/// Lines of a sweep that leaves the transform in the plane: what is done goes back into the finer
/// levels, up to the plane.
template <class T>
class CLinesInPlace : public CLevelLines<T> {
public:
    using CLevelLines<T>::CLevelLines;

    void passOn(int level, int r) {
        kernels.takeEvens(this->line(level + 1, r / 2), this->line(level, r),
                          this->columns(level + 1));
    }
    void settle(int level, int r) {
        for (; level > 0; --level, r *= 2)
            kernels.putEvens(this->line(level - 1, 2 * r), this->line(level, r),
                             this->columns(level));
    }

private:
    const LiftingKernels<T>& kernels = activeLiftingKernels<T>();
};

}  // namespace

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
    CLinesInPlace<T> lines(*this->image, this->levels, memory);
    for (int p = 0; p < this->image->planes; ++p) {
        lines.setPlane(this->image->plane[p]);
        CForwardSweep<T, CLinesInPlace<T>> sweep(lines);
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
