#pragma once

#include "bitstream/CStopRequest.h"

namespace qmx {

/// How an image is decoded where that is a choice.
struct RowDecoding {
    /// Coefficients of rows in front of this one are 0 in all colour planes but the first, whose sections
    /// then begin with this row (Quirk 5). 0 for reduced pictures.
    int firstRowOfLaterPlanes = 0;
    /// Ends the work.
    const CStopRequest& stop = kNeverStopped;

    int firstRowOf(int plane) const { return plane == 0 ? 0 : firstRowOfLaterPlanes; }
};

}  // namespace qmx
