#pragma once

#include "coding/encode/ClosingRuns.h"
#include "coding/syntax/FoldedValue.h"
#include "wavelet/CRowRestorer.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// The rows of a gray image, to which an offset is added whose transform leads from some coefficients of
/// the coarsest order to others.
template <class T>
class COffsetSource final : public IRowSource<T> {
public:
    /// from, to: folded values of the coarsest order, in scan order. Requires: all outlive this object;
    /// the image has levels. Throws: std::bad_alloc.
    COffsetSource(IRowSource<T>& imageRows, const ImageShape& shape, const FoldedValues& from,
                  const FoldedValues& to, std::pmr::memory_resource* memory)
        : image(imageRows),
          oldValues(from),
          newValues(to),
          stepColumns(1 << levelCount(shape.width, shape.height)),
          width(shape.width),
          offset(shape, memory) {}

    void load(CImageData<T>& rows, int slot, int r) override {
        image.load(rows, slot, r);
        offset.restore(r, [this](int, int row, T* samples) {
            fillCoefficients(row, samples);
            return true;
        });
        const T* offsets = offset.rows().row(0, 0);
        T* samples = rows.row(0, slot);
        for (int c = 0; c < width; ++c)
            samples[c] = static_cast<T>(samples[c] + offsets[c]);
    }

private:
    void fillCoefficients(int row, T* samples) {
        std::fill_n(samples, width, T{0});
        if (row % stepColumns != 0) return;
        for (int c = 0; c < width; c += stepColumns, ++next)
            *samples++ = static_cast<T>(unfold<T>(newValues[next]) - unfold<T>(oldValues[next]));
    }

    IRowSource<T>& image;
    const FoldedValues& oldValues;
    const FoldedValues& newValues;
    int stepColumns;
    int width;
    CRowRestorer<T> offset;
    std::size_t next = 0;
};

}  // namespace qmx
