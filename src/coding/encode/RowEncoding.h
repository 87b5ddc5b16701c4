#pragma once

#include "bitstream/CStopRequest.h"

namespace qmx {

/// How an image is coded where that is a choice.
struct RowEncoding {
    /// Filters an image without levels once, as decoders expect it (Quirk 4).
    bool filtersThinImages = false;
    /// Rows in front of this one are left out of all colour planes but the first (Quirk 5).
    int firstRowOfLaterPlanes = 0;
    /// Ends the work.
    const CStopRequest& stop = kNeverStopped;

    int firstRowOf(int plane) const { return plane == 0 ? 0 : firstRowOfLaterPlanes; }
};

}  // namespace qmx
