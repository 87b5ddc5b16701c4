#pragma once

#include "wavelet/CLevelLines.h"
#include "wavelet/LiftingKernels.h"

namespace qmx {

/// Transforms a plane in one pass from top to bottom, with the 5/3 filter, at all levels at once: a
/// row enters the next level as soon as its level has filtered it in both directions, and returns into
/// the plane when the deeper levels are done with it. So the plane is read and written once, and what
/// is in work stays near.
///
/// The result is that of one level after the other: each level filters its rows, then its columns, and
/// a step down the columns needs no more than the rows beside it.
/// Format: docs/format.md, 6.4 Forward transform.
template <class T>
class CForwardSweep {
public:
    /// Requires: levelLines outlives the sweep and has a plane.
    explicit CForwardSweep(const CLevelLines<T>& levelLines)
        : lines(levelLines), kernels(activeLiftingKernels<T>()) {}

    /// Takes row r of the plane. The plane is transformed after the last one. Requires: all rows, from
    /// 0 on.
    void takeRow(int r) { takeRow(0, r); }

private:
    void takeRow(int level, int r);
    void filterColumns(int level, int smoothRow);
    void endColumns(int level, int lastRow);
    void passOn(int level, int smoothRow);
    void settle(int level, int r);

    const CLevelLines<T>& lines;
    const LiftingKernels<T>& kernels;
};

extern template class CForwardSweep<short>;
extern template class CForwardSweep<int>;

}  // namespace qmx
