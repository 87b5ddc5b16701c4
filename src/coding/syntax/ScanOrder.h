#pragma once

#include <algorithm>
#include <bit>

namespace qmx {

// Format: docs/format.md, 7 Orders and scan order.

/// Returns: the highest order that has coefficients in a row; -1 when there are no orders.
constexpr int rowLevel(int row, int levels) {
    return row == 0 ? levels : std::min(std::countr_zero(static_cast<unsigned>(row)), levels);
}

/// The coefficients of one order in a row: columns first, first + step, ...
struct ScanLine {
    int order;
    int firstColumn;
    int stepColumns;

    /// Coefficients of the line from column on, in a plane of the given width.
    constexpr int countFrom(int column, int width) const {
        return column < width ? (width - 1 - column) / stepColumns + 1 : 0;
    }
};

/// Calls visit(ScanLine) for each order of a row, lowest first: this is the order in which encoder
/// and decoder meet the coefficients.
template <class Visit>
constexpr void forEachOrder(int row, int levels, Visit visit) {
    const int level = rowLevel(row, levels);
    for (int order = 0; order < level; ++order)
        visit(ScanLine{order, 1 << order, 2 << order});
    if (level >= 0) visit(ScanLine{level, 0, 1 << level});
}

}  // namespace qmx
