#pragma once

#include "wavelet/CLevelLines.h"
#include "wavelet/LiftingKernels.h"

namespace qmx {

/// Undoes a CForwardSweep, in one pass from top to bottom: a step of a level asks the next level for
/// the row that it needs, so that deeper levels run ahead. The samples of a row that belong to deeper
/// levels are gathered before the row is touched.
/// Format: docs/format.md, 6.6 Inverse transform.
template <class T>
class CInverseSweep {
public:
    /// Requires: levelLines outlives the sweep.
    explicit CInverseSweep(const CLevelLines<T>& levelLines)
        : lines(levelLines), kernels(activeKernels<LiftingKernels<T>>()) {}

    /// Restores row r of the plane, and at most two more. Requires: all rows, from 0 on.
    void restoreRow(int r) { restoreRow(0, r); }

private:
    void restoreRow(int level, int r);
    void step(int level, int smoothRow);
    void gather(int level, int r);
    void fillSmooth(int level, int smoothRow);
    void unfilterColumns(int level, int smoothRow);
    void unfilterLine(int level, int r);

    const CLevelLines<T>& lines;
    const LiftingKernels<T>& kernels;
    /// The smooth row that the next step of each level begins with; all before the one in front of it
    /// are restored.
    int nextSmooth[kMaxLevels] = {};
};

extern template class CInverseSweep<short>;
extern template class CInverseSweep<int>;

}  // namespace qmx
