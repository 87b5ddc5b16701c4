#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace reference {

/// One colour plane: samples before the forward transform, coefficients behind it. No coefficient
/// moves (docs/format.md, 6).
struct Plane {
    std::int64_t width;
    std::int64_t height;
    std::vector<std::int64_t> values;  ///< row after row

    Plane(std::int64_t columns, std::int64_t rows)
        : width(columns), height(rows), values(static_cast<std::size_t>(columns * rows), 0) {}

    std::int64_t& at(std::int64_t y, std::int64_t x) {
        return values[static_cast<std::size_t>(y * width + x)];
    }
    std::int64_t at(std::int64_t y, std::int64_t x) const {
        return values[static_cast<std::size_t>(y * width + x)];
    }
};

/// "Wraps to n bits": the low `bits` bits of `value`, read as two's complement (docs/format.md, 1).
std::int64_t wrap(std::int64_t value, std::int64_t bits);

/// L, -1..5 (docs/format.md, 6.3).
std::int64_t levelCount(std::int64_t width, std::int64_t height);

/// The order of the coefficient in row y and column x (docs/format.md, 7). `levels` is at least 0.
std::int64_t orderOf(std::int64_t y, std::int64_t x, std::int64_t levels);

/// Transforms in place with coefficients of 16 or 32 bits (docs/format.md, 6.4).
void forwardTransform(Plane& plane, std::int64_t coefficientBits);

/// Inverts in place with coefficients of 16 or 32 bits (docs/format.md, 6.6).
void inverseTransform(Plane& plane, std::int64_t coefficientBits);

/// The same, but stops when the step 2^reduction has been inverted (docs/format.md, 17). Requires:
/// reduction is 1 at least and at most the number of levels.
void inverseTransformDownTo(Plane& plane, std::int64_t reduction, std::int64_t coefficientBits);

}  // namespace reference
