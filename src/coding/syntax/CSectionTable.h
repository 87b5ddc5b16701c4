#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <vector>

#include "image/CImageData.h"
#include "wavelet/LevelGeometry.h"

namespace qmx {

/// Colour planes that images and streams have at most: no section of another one is accepted.
inline constexpr int kTablePlanes = CImageData<short>::kMaxPlanes;
/// Bit planes that tables have room for at most: as many as the coefficient type has bits. A stream may
/// name higher ones; they carry nothing (Quirk 13). Format: docs/format.md, 8 Folded values and top plane.
template <class T>
inline constexpr int kTableBitPlanes = 8 * static_cast<int>(sizeof(T));

/// What a table has room for. What an image has not takes none.
struct TableSize {
    int planes;
    int orders;
    int bitPlanes;

    /// Returns: the size for an image of so many levels, which may be -1.
    static TableSize of(int planes, int levels, int bitPlanes) {
        return {planes, std::max(levels + 1, 0), std::max(bitPlanes, 0)};
    }
    std::size_t elements() const {
        return static_cast<std::size_t>(planes) * static_cast<std::size_t>(orders) *
               static_cast<std::size_t>(bitPlanes);
    }
};

/// One element for each colour plane, order and bit plane.
template <class Element>
class CSectionTable {
public:
    /// Requires: memory outlives the table. Throws: std::bad_alloc.
    CSectionTable(const TableSize& tableSize, std::pmr::memory_resource* memory)
        : size(tableSize), elements(tableSize.elements(), memory) {}

    /// Returns: the element, or null outside the table: the coordinates may come from a stream.
    Element* find(int plane, int order, std::int64_t bitPlane) {
        // Unsigned on purpose: what is below 0 is too large.
        const bool inside =
            static_cast<unsigned>(plane) < static_cast<unsigned>(size.planes) &&
            static_cast<unsigned>(order) < static_cast<unsigned>(size.orders) &&
            static_cast<std::uint64_t>(bitPlane) < static_cast<std::uint64_t>(size.bitPlanes);
        return inside ? bitPlanes(plane, order) + bitPlane : nullptr;
    }

    /// Returns: the elements of one plane and order, one for each bit plane. Requires: both inside.
    Element* bitPlanes(int plane, int order) {
        return elements.data() + std::ptrdiff_t{plane * size.orders + order} * size.bitPlanes;
    }

    template <class Visit>
    void forEach(Visit visit) {
        for (Element& element : elements)
            visit(element);
    }

private:
    TableSize size;
    std::pmr::vector<Element> elements;
};

}  // namespace qmx
