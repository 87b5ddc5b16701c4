#pragma once

#include "container/TKHeader.h"
#include "image/PixelRows.h"
#include "wavelet/IRowSink.h"

namespace qmx {

/// Writes the rows of a decoded image to memory.
template <class T>
class CPixelSink final : public IRowSink<T> {
public:
    /// out: header.ySize rows, strideBytes from one to the next, at any address; may be null for an image
    /// without pixels.
    CPixelSink(const TKHeader& header, const CSampleLimit<T>& sampleLimit, unsigned char* out,
               std::size_t strideBytes)
        : bytesPerPixel(header.bytesPerPixel),
          limit(sampleLimit),
          first(out),
          stride(strideBytes) {}

    bool take(const CImageData<T>& rows, int slot, int r) override {
        if (rows.x == 0) return true;
        storeRow(rows, slot, bytesPerPixel, limit, first + static_cast<std::size_t>(r) * stride);
        return true;
    }

private:
    int bytesPerPixel;
    CSampleLimit<T> limit;
    unsigned char* first;
    std::size_t stride;
};

}  // namespace qmx
