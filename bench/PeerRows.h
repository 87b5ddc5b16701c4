#pragma once

#include <cstdint>
#include <span>

#include "BenchPicture.h"

// Libraries that want each plane as 32-bit integers: raw rows there and back.

namespace bench {

/// Copies plane p of a raw row to values.
inline void widenRow(const Picture& picture, const unsigned char* row, std::size_t p,
                     std::int32_t* values) {
    const std::size_t width = picture.image.width;
    if (picture.image.bytes_per_pixel == 2) {
        for (std::size_t c = 0; c < width; ++c)
            values[c] = row[2 * c] | row[2 * c + 1] << 8;
    } else {
        const std::size_t step = picture.planes();
        for (std::size_t c = 0; c < width; ++c)
            values[c] = row[step * c + p];
    }
}

/// The inverse of widenRow.
inline void narrowRow(const Picture& layout, const std::int32_t* values, std::size_t p,
                      unsigned char* row) {
    const std::size_t width = layout.image.width;
    if (layout.image.bytes_per_pixel == 2) {
        for (std::size_t c = 0; c < width; ++c) {
            row[2 * c] = static_cast<unsigned char>(values[c]);
            row[2 * c + 1] = static_cast<unsigned char>(values[c] >> 8);
        }
    } else {
        const std::size_t step = layout.planes();
        for (std::size_t c = 0; c < width; ++c)
            row[step * c + p] = static_cast<unsigned char>(values[c]);
    }
}

}  // namespace bench
