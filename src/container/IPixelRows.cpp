#include "container/IPixelRows.h"

#include "image/UsedBits.h"

namespace qmx {

unsigned IPixelRows::usedBits(const TKHeader& header, const CStopRequest& stop) {
    unsigned used = 0;
    for (int r = 0; r < header.ySize && !stop.isSet(); ++r)
        used |= usedBitsOf(row(r), header.rawRowBytes(), header.bytesPerPixel);
    return used;
}

unsigned CPixelsInMemory::glimpseBits(const TKHeader& header, const CStopRequest& stop) {
    constexpr int kRowsBetween = 16;
    unsigned used = 0;
    for (int r = 0; r < header.ySize && !stop.isSet(); r += kRowsBetween)
        used |= usedBitsOf(row(r), header.rawRowBytes(), header.bytesPerPixel);
    return used;
}

}  // namespace qmx
