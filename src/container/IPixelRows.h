#pragma once

#include <cstddef>
#include <cstring>
#include <type_traits>

#include "bitstream/CStopRequest.h"
#include "container/TKHeader.h"
#include "image/PixelRows.h"
#include "image/UsedBits.h"
#include "wavelet/IRowSource.h"

namespace qmx {

/// The rows of a raw image, wherever they come from. Format: docs/format.md, 2 Raw images.
class IPixelRows {
public:
    virtual ~IPixelRows() = default;
    /// Returns: the bytes of row r, until the next call; they may be null where a row has none.
    /// Requires: r is 0, or the row behind the one that was asked for last.
    /// Throws: 3 when there is no such row; FileError; std::bad_alloc.
    virtual const unsigned char* row(int r) = 0;
    /// Returns: whether row 0 can be asked for again.
    virtual bool canRepeat() const { return true; }
    /// Compares a decoded image with this one, row by row from row 0 on. Returns: false once it differs;
    /// rows that cannot be repeated show it behind the last one alone. Throws: as row.
    virtual bool isSameRow(int r, const unsigned char* decoded, std::size_t sizeBytes) {
        return std::memcmp(row(r), decoded, sizeBytes) == 0;
    }
    /// Returns: the bitwise or of all samples; of some when it was stopped. Throws: as row.
    virtual unsigned usedBits(const TKHeader& header, const CStopRequest& stop);
    /// Returns: the same of some rows, at little cost, for a guess; ~0 where they cannot be asked for.
    virtual unsigned glimpseBits(const TKHeader&, const CStopRequest&) { return ~0U; }
};

/// Rows in memory, strideBytes from one to the next, at any address.
class CPixelsInMemory final : public IPixelRows {
public:
    /// Requires: pixels stay as they are while this object is used.
    CPixelsInMemory(const void* pixels, std::size_t strideBytes)
        : first(static_cast<const unsigned char*>(pixels)), stride(strideBytes) {}

    const unsigned char* row(int r) override {
        return first == nullptr ? nullptr : first + static_cast<std::size_t>(r) * stride;
    }
    unsigned glimpseBits(const TKHeader& header, const CStopRequest& stop) override;

private:
    const unsigned char* first;
    std::size_t stride;
};

/// Raw rows as an encoder takes them.
template <class T>
class CPixelSource final : public IRowSource<T> {
public:
    /// Requires: pixelRows outlives this object; bytesPerPixel as loadRow requires it.
    CPixelSource(IPixelRows& pixelRows, int bytesPerPixel)
        : pixels(pixelRows), layout(bytesPerPixel) {}

    void load(CImageData<T>& rows, int slot, int r) override {
        const unsigned char* row = pixels.row(r);
        if (rows.x == 0) return;
        if constexpr (std::is_same_v<T, short>)
            if (layout == 2) used |= usedBitsOf(row, static_cast<std::size_t>(rows.x) * 2, layout);
        loadRow(rows, slot, layout, row);
    }
    /// Returns: the bitwise or of the samples so far, if they have 2 bytes each and become 16-bit ones.
    unsigned usedBits() const { return used; }

private:
    IPixelRows& pixels;
    int layout;
    unsigned used = 0;
};

}  // namespace qmx
