#pragma once

#include <algorithm>

#include "coding/encode/CCodedSections.h"
#include "coding/encode/CPlaneEncoder.h"
#include "coding/encode/RowEncoding.h"
#include "wavelet/CForwardSweep.h"

namespace qmx {

/// Lines of an image without levels: all coefficients belong to order 0, or to none where a side is 1.
template <class T>
class CThinLines {
public:
    /// Requires: rows, planeEncoder and memory outlive this object. Throws: std::bad_alloc.
    CThinLines(const ImageShape& imageShape, CImageData<T>& rows, int planeIndex,
               CPlaneEncoder<T>& planeEncoder, std::pmr::memory_resource* memory)
        : shape(imageShape),
          ring(rows),
          plane(planeIndex),
          encoder(planeEncoder),
          before(shape.width, ring.y, 1, memory) {}

    /// Remembers row r as it is before it is filtered.
    void begin(int r) { std::copy_n(line(0, r), columns(0), before.row(0, r % ring.y)); }
    void encode(int r) { encoder.encodeLine(0, r, line(0, r), columns(0)); }
    /// Returns: whether a row was done that is not as it was.
    bool hasChanged() const { return isChanged; }

    int count() const { return 1; }
    int rows(int) const { return shape.height; }
    std::size_t columns(int) const { return static_cast<std::size_t>(shape.width); }
    std::size_t filteredColumns(int) const { return columns(0); }
    T* line(int, int r) const { return ring.row(plane, r % ring.y); }

    void passOn(int, int) {}  // there is no next level
    void done(int, int r) {
        const T* row = line(0, r);
        isChanged = isChanged || !std::equal(row, row + columns(0), before.row(0, r % ring.y));
        encode(r);
    }

private:
    ImageShape shape;
    CImageData<T>& ring;
    int plane;
    CPlaneEncoder<T>& encoder;
    CImageData<T> before;
    bool isChanged = false;
};

/// What codes one colour plane of an image without levels, filtered once or as it is.
template <class T>
class CThinPlane {
public:
    CThinPlane(CCodedSections<T>& sections, CImageData<T>& rows, int plane, const RowEncoding& how)
        : encoder(sections, plane, how.firstRowOf(plane)),
          lines(sections.shape(), rows, plane, encoder, sections.memory()),
          sweep(lines),
          isFiltered(how.filtersThinImages) {}

    void takeRow(int r) {
        if (!isFiltered) return lines.encode(r);
        lines.begin(r);
        sweep.takeRow(r);
    }
    bool isChangedByFilter() const { return lines.hasChanged(); }

    CPlaneEncoder<T> encoder;

private:
    CThinLines<T> lines;
    CForwardSweep<T, CThinLines<T>> sweep;
    bool isFiltered;
};

}  // namespace qmx
