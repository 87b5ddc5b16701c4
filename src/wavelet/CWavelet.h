#pragma once

#include <atomic>

#include "image/CImageData.h"
#include "wavelet/CFilter.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

/// State shared by the forward and the inverse transform: the planes that are worked on in place,
/// the filter, and where a suspended coder goes on.
///
/// Threads: requestStop and requestKill may be called from any thread at any time; everything else
/// belongs to one thread.
template <class T>
class CWavelet {
public:
    CWavelet(const CWavelet&) = delete;
    CWavelet& operator=(const CWavelet&) = delete;

    int getLevels() const { return levels; }
    CImageData<T>& getImage() const { return *image; }
    /// Also obeys a flag that others own: while it is true, all work ends as if killed.
    /// Requires: flag outlives this object.
    void watch(const std::atomic<bool>& flag) { watchedFlag = &flag; }

    /// Returns: whether there are levels and the filter is the 5/3 one, so that a sweep over all levels
    /// does what the filter would do level by level.
    bool canSweep() const;
    /// Returns: whether canSweep() and goesByRows(width, height) of the image.
    bool gainsByRows() const;

protected:
    /// Owns: image and filter if ownsBoth, from here on.
    CWavelet(CImageData<T>* imageData, CFilter<T>* lineFilter, bool ownsBoth);
    ~CWavelet();

    void requestStop() { stopFlag.store(true, std::memory_order_relaxed); }
    void requestKill() {
        requestStop();
        killFlag.store(true, std::memory_order_relaxed);
    }
    bool isKilled() const { return killFlag.load(std::memory_order_relaxed) || isCancelled(); }
    bool isCancelled() const {
        return watchedFlag != nullptr && watchedFlag->load(std::memory_order_relaxed);
    }

    LevelGeometry levelAt(int step) const { return {image->x, image->y, image->stride, step}; }
    /// Calls batch(first sample, number of columns) for groups of neighbouring columns that cover
    /// all columns of the level which are filtered.
    template <class Batch>
    void forEachColumnBatch(int p, const LevelGeometry& level, Batch batch) const {
        const int columns = level.filteredColumns();
        for (int first = 0; first < columns; first += kBatchColumns) {
            const int count = columns - first < kBatchColumns ? columns - first : kBatchColumns;
            batch(image->plane[p] + static_cast<std::ptrdiff_t>(first) * level.step, count);
        }
    }

    /// A coder starts afresh when no row has been finished.
    bool isFreshStart() const { return resumeRow == 0 && resumePlane < 1; }
    /// Calls visitRow(plane, row) from the resume point on; stops after a row when a stop was
    /// requested or when the row's index is -arg (arg < 0). Returns: whether it was suspended. Once
    /// killed, a call that goes on visits nothing and counts as suspended.
    ///
    /// Quirk 5: after a suspension every later plane starts at the resume row too.
    template <class VisitRow>
    bool scanRows(int arg, VisitRow visitRow);

    CFilter<T>* filter;
    CImageData<T>* image;
    bool owns;
    int levels;
    std::atomic<bool> stopFlag{false};
    std::atomic<bool> killFlag{false};
    const std::atomic<bool>* watchedFlag = nullptr;
    /// Top plane of the stream.
    int bits = 0;
    int resumeRow = 0;
    int resumePlane = 0;
    /// Result of the last call of the coder.
    int status = -1;

    static_assert(sizeof(std::atomic<bool>) == 1);
};

template <class T>
template <class VisitRow>
bool CWavelet<T>::scanRows(int arg, VisitRow visitRow) {
    if (isKilled() && !isFreshStart()) return true;
    for (int p = resumePlane; p < image->planes; ++p) {
        for (int r = resumeRow; r < image->y; ++r) {
            visitRow(p, r);
            const bool stopped = stopFlag.load(std::memory_order_relaxed) || isKilled();
            if (!stopped && (arg >= 0 || arg != -r)) continue;
            stopFlag.store(false, std::memory_order_relaxed);
            resumeRow = r + 1;
            resumePlane = p;
            return true;
        }
    }
    return false;
}

extern template class CWavelet<short>;
extern template class CWavelet<int>;

}  // namespace qmx
