#pragma once

#include <memory_resource>

#include "bitstream/CStopRequest.h"
#include "bitstream/Status.h"
#include "container/IPixelRows.h"
#include "container/TKHeader.h"
#include "image/ImageShape.h"

namespace qmx {

/// An image that is compressed, and perhaps compared with what its stream restores.
struct ImageJob {
    /// Its format is supported.
    TKHeader header;
    IPixelRows& pixels;
    std::pmr::memory_resource* memory = std::pmr::new_delete_resource();
    /// Ends all work.
    const CStopRequest& stop = kNeverStopped;
};

inline ImageShape shapeOf(const TKHeader& header) {
    return {header.xSize, header.ySize, header.planes()};
}

/// Returns: the limit of the samples that a decoder gives. Only a stream that ended early can leave the
/// range of its samples by itself.
template <class T>
CSampleLimit<T> limitOf(int result, const TKHeader& header) {
    return CSampleLimit<T>(result == kCut ? header.bitsPerPixel : 0);
}

}  // namespace qmx
