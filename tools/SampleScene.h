#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <vector>

// A photograph-like picture from formulas: hills under a sky. Smooth areas, edges, texture and
// sensor noise in about the mixture of a real photograph, the same on every machine.

namespace sample {

/// Returns: a number from 0 to 1 that belongs to a lattice point.
inline double lattice(int x, int y, unsigned octave) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1U +
                      static_cast<std::uint32_t>(y) * 0x85EBCA77U + octave * 0xC2B2AE3DU;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    return static_cast<double>(h ^ (h >> 15)) / 4294967295.0;
}

inline double smooth(double t) {
    return t * t * (3.0 - 2.0 * t);
}

/// Returns: smooth noise from 0 to 1 with features of about one unit.
inline double valueNoise(double x, double y, unsigned octave) {
    const int column = static_cast<int>(std::floor(x));
    const int row = static_cast<int>(std::floor(y));
    const double tx = smooth(x - column);
    const double ty = smooth(y - row);
    const double above =
        std::lerp(lattice(column, row, octave), lattice(column + 1, row, octave), tx);
    const double below =
        std::lerp(lattice(column, row + 1, octave), lattice(column + 1, row + 1, octave), tx);
    return std::lerp(above, below, ty);
}

/// Returns: noise from 0 to 1 with detail down to 2^-octaves of a unit.
inline double fractal(double x, double y, unsigned octaves) {
    double sum = 0.0;
    double weight = 0.5;
    for (unsigned octave = 0; octave < octaves; ++octave, weight /= 2, x *= 2, y *= 2)
        sum += weight * valueNoise(x, y, octave);
    return sum;
}

inline constexpr int kHills = 4;

/// Returns: the height above which a hill ends, from the top, at a place of a picture that is 1
/// high.
inline double ridge(double x, int hill) {
    return 0.18 + 0.17 * hill + 0.25 * fractal(x * 3 + 7 * hill, hill, 6);
}

/// Returns: the brightness from 0 to 1 of the sky.
inline double sky(double x, double y) {
    return 0.85 - 0.35 * y + 0.18 * fractal(x * 2, y * 4, 3);
}

/// Returns: the brightness from 0 to 1 of the ground on a hill.
inline double ground(double x, double y, int hill) {
    return 0.375 - 0.09 * hill + 0.25 * fractal(x * 30, y * 30 + hill, 6);
}

/// One column of the picture; hills are looked up once, not for every pixel.
struct Column {
    explicit Column(double place) : x(place) {
        for (int hill = 0; hill < kHills; ++hill)
            ridges[hill] = ridge(x, hill);
    }
    double brightness(double y) const {
        int hill = kHills - 1;
        while (hill >= 0 && y < ridges[hill])
            --hill;
        return hill < 0 ? sky(x, y) : ground(x, y, hill);
    }
    double x;
    double ridges[kHills];
};

/// The layout of a raw image, as the tool's arguments give it.
struct Layout {
    int width;
    int height;
    int bytesPerPixel;
    int bitsPerPixel;
};

/// Returns: a sample of colour plane p at column c and row r, with the grain of a sensor.
inline unsigned sampleAt(const Column& column, int c, int r, int p, const Layout& layout) {
    const double top = (1 << layout.bitsPerPixel) - 1;
    const double grain = lattice(c, r, 99U - 2U * static_cast<unsigned>(p)) +
                         lattice(c, r, 98U - 2U * static_cast<unsigned>(p)) - 1.0;
    const double light = column.brightness(static_cast<double>(r) / layout.height);
    // Skies and shadows of a photograph are bluish, its ground is not.
    const double tint = 1.0 - 0.08 * p * (1.0 - light);
    const double level = top * light * tint + top / 255.0 * 2.5 * grain;
    return static_cast<unsigned>(std::fmin(std::fmax(level, 0.0), top));
}

/// Returns: the bytes of a raw image.
inline std::vector<unsigned char> makeImage(const Layout& layout) {
    const int planes = layout.bytesPerPixel == 3 ? 3 : 1;
    std::vector<Column> columns;
    for (int c = 0; c < layout.width; ++c)
        columns.emplace_back(static_cast<double>(c) / layout.height);
    std::vector<unsigned char> bytes;
    bytes.reserve(static_cast<std::size_t>(layout.width) * static_cast<std::size_t>(layout.height) *
                  static_cast<std::size_t>(layout.bytesPerPixel));
    for (int r = 0; r < layout.height; ++r)
        for (int c = 0; c < layout.width; ++c)
            for (int p = 0; p < planes; ++p) {
                const unsigned sample =
                    sampleAt(columns[static_cast<std::size_t>(c)], c, r, p, layout);
                bytes.push_back(static_cast<unsigned char>(sample));
                if (layout.bytesPerPixel == 2)
                    bytes.push_back(static_cast<unsigned char>(sample >> 8));
            }
    return bytes;
}

}  // namespace sample
