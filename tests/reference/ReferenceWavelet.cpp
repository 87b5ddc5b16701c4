#include "ReferenceWavelet.h"

#include <algorithm>

namespace reference {
namespace {

using Line = std::vector<std::int64_t>;

enum class Direction { forward, inverse };

/// Both widths form sums in 32 bits. Sums of 16-bit values never wrap there (docs/format.md, 6.1).
std::int64_t sum(std::int64_t a, std::int64_t b) {
    return wrap(a + b, 32);
}

/// s / 2, rounded to nearest, ties away from zero (docs/format.md, 6.1).
std::int64_t half(std::int64_t s) {
    return s >= 0 ? sum(s, 1) >> 1 : s >> 1;
}

/// s / 4, rounded to nearest, ties away from zero (docs/format.md, 6.1).
std::int64_t quarter(std::int64_t s) {
    return s >= 0 ? sum(s, 2) >> 2 : sum(s, 1) >> 2;
}

/// What the forward direction subtracts from a[k], k odd (docs/format.md, 6.2).
std::int64_t prediction(const Line& a, std::size_t k) {
    if (k + 1 < a.size()) return half(sum(a[k - 1], a[k + 1]));
    return a[k - 1];
}

/// What the forward direction adds to a[k], k even (docs/format.md, 6.2).
std::int64_t update(const Line& a, std::size_t k) {
    if (k == 0) return half(a[1]);
    if (k + 1 < a.size()) return quarter(sum(a[k - 1], a[k + 1]));
    return half(a[k - 1]);
}

void forwardLine(Line& a, std::int64_t bits) {
    for (std::size_t k = 1; k < a.size(); k += 2)
        a[k] = wrap(a[k] - prediction(a, k), bits);
    for (std::size_t k = 0; k < a.size(); k += 2)
        a[k] = wrap(a[k] + update(a, k), bits);
}

void inverseLine(Line& a, std::int64_t bits) {
    for (std::size_t k = 0; k < a.size(); k += 2)
        a[k] = wrap(a[k] - update(a, k), bits);
    for (std::size_t k = 1; k < a.size(); k += 2)
        a[k] = wrap(a[k] + prediction(a, k), bits);
}

void transformLine(Line& line, std::int64_t bits, Direction direction) {
    if (line.size() < 4) return;
    if (direction == Direction::forward) forwardLine(line, bits);
    if (direction == Direction::inverse) inverseLine(line, bits);
}

void transformRow(Plane& plane, std::int64_t y, std::int64_t step, std::int64_t bits,
                  Direction direction) {
    Line line;
    for (std::int64_t x = 0; x < plane.width; x += step)
        line.push_back(plane.at(y, x));
    transformLine(line, bits, direction);
    for (std::size_t i = 0; i < line.size(); ++i) {
        plane.at(y, static_cast<std::int64_t>(i) * step) = line[i];
    }
}

void transformColumn(Plane& plane, std::int64_t x, std::int64_t step, std::int64_t bits,
                     Direction direction) {
    Line line;
    for (std::int64_t y = 0; y < plane.height; y += step)
        line.push_back(plane.at(y, x));
    transformLine(line, bits, direction);
    for (std::size_t i = 0; i < line.size(); ++i) {
        plane.at(static_cast<std::int64_t>(i) * step, x) = line[i];
    }
}

void transformRows(Plane& plane, std::int64_t step, std::int64_t bits, Direction direction) {
    for (std::int64_t y = 0; y < plane.height; y += step) {
        transformRow(plane, y, step, bits, direction);
    }
}

/// A wide and tall step leaves the column out that its stride does not divide (docs/format.md,
/// 6.5).
std::int64_t transformedColumns(const Plane& plane, std::int64_t step) {
    const std::int64_t pitch = (plane.width + 7) / 8 * 8;
    const bool wideAndTall = pitch * step > 512 && (plane.height - 1) / step >= 512;
    return wideAndTall ? plane.width / step : (plane.width + step - 1) / step;
}

void transformColumns(Plane& plane, std::int64_t step, std::int64_t bits, Direction direction) {
    const std::int64_t count = transformedColumns(plane, step);
    for (std::int64_t i = 0; i < count; ++i) {
        transformColumn(plane, i * step, step, bits, direction);
    }
}

/// tz(v): the number of trailing zero bits, at most `levels`; tz(0) = levels (docs/format.md, 7).
std::int64_t trailingZeros(std::int64_t v, std::int64_t levels) {
    std::int64_t count = 0;
    while (count < levels && ((v >> count) & 1) == 0)
        ++count;
    return count;
}

}  // namespace

std::int64_t wrap(std::int64_t value, std::int64_t bits) {
    const std::uint64_t modulus = std::uint64_t{1} << bits;
    const std::uint64_t low = static_cast<std::uint64_t>(value) & (modulus - 1);
    const bool negative = low >= modulus / 2;
    return static_cast<std::int64_t>(low) - (negative ? static_cast<std::int64_t>(modulus) : 0);
}

std::int64_t levelCount(std::int64_t width, std::int64_t height) {
    const std::int64_t shorter = std::min(width / 2, height / 2);
    std::int64_t levels = -1;
    while (levels < 5 && (std::int64_t{1} << (levels + 1)) <= shorter)
        ++levels;
    return levels;
}

std::int64_t orderOf(std::int64_t y, std::int64_t x, std::int64_t levels) {
    return std::min(trailingZeros(y, levels), trailingZeros(x, levels));
}

void forwardTransform(Plane& plane, std::int64_t coefficientBits) {
    const std::int64_t levels = levelCount(plane.width, plane.height);
    for (std::int64_t level = 0; level < levels; ++level) {
        const std::int64_t step = std::int64_t{1} << level;
        transformRows(plane, step, coefficientBits, Direction::forward);
        transformColumns(plane, step, coefficientBits, Direction::forward);
    }
}

void inverseTransformDownTo(Plane& plane, std::int64_t reduction, std::int64_t coefficientBits) {
    const std::int64_t levels = levelCount(plane.width, plane.height);
    for (std::int64_t level = levels - 1; level >= reduction; --level) {
        const std::int64_t step = std::int64_t{1} << level;
        transformColumns(plane, step, coefficientBits, Direction::inverse);
        transformRows(plane, step, coefficientBits, Direction::inverse);
    }
}

void inverseTransform(Plane& plane, std::int64_t coefficientBits) {
    // The step 1 is inverted even where the forward direction did nothing (docs/format.md, 6.6).
    const std::int64_t levels =
        std::max<std::int64_t>(levelCount(plane.width, plane.height), std::int64_t{1});
    for (std::int64_t level = levels - 1; level >= 0; --level) {
        const std::int64_t step = std::int64_t{1} << level;
        transformColumns(plane, step, coefficientBits, Direction::inverse);
        transformRows(plane, step, coefficientBits, Direction::inverse);
    }
}

}  // namespace reference
