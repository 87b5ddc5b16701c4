#pragma once

#include <algorithm>
#include <vector>

namespace test {

/// Returns: row r of the coefficients of a plane as CRowRestorer wants it, for so many levels that it restores: the
/// evens of each level in front of its odds, as far as the row belongs to it.
template <class T>
std::vector<T> apartRow(std::vector<T> row, int r, int levels) {
    std::size_t columns = row.size();
    for (; levels > 0; --levels, r /= 2) {
        const std::vector<T> line(row.begin(), row.begin() + static_cast<std::ptrdiff_t>(columns));
        const std::size_t evens = (columns + 1) / 2;
        for (std::size_t c = 0; c < columns; ++c)
            row[c % 2 == 0 ? c / 2 : evens + c / 2] = line[c];
        if (r % 2 != 0) break;
        columns = evens;
    }
    return row;
}

}  // namespace test
