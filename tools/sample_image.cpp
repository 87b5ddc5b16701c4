// Makes a gray photograph-like raw image: `sample_image WIDTH HEIGHT FILE`. Hills under a sky:
// smooth areas, edges, texture and sensor noise in about the mixture of a real photograph.

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace {

/// Returns: a number from 0 to 1 that belongs to a lattice point.
double lattice(int x, int y, unsigned octave) {
    std::uint32_t h = static_cast<std::uint32_t>(x) * 0x9E3779B1U +
                      static_cast<std::uint32_t>(y) * 0x85EBCA77U + octave * 0xC2B2AE3DU;
    h = (h ^ (h >> 15)) * 0x2C1B3C6DU;
    h = (h ^ (h >> 12)) * 0x297A2D39U;
    return static_cast<double>(h ^ (h >> 15)) / 4294967295.0;
}

double smooth(double t) {
    return t * t * (3.0 - 2.0 * t);
}

/// Returns: smooth noise from 0 to 1 with features of about one unit.
double valueNoise(double x, double y, unsigned octave) {
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
double fractal(double x, double y, unsigned octaves) {
    double sum = 0.0;
    double weight = 0.5;
    for (unsigned octave = 0; octave < octaves; ++octave, weight /= 2, x *= 2, y *= 2)
        sum += weight * valueNoise(x, y, octave);
    return sum;
}

constexpr int kHills = 4;

/// Returns: the height above which a hill ends, from the top, at a place of a picture that is 1
/// high.
double ridge(double x, int hill) {
    return 0.18 + 0.17 * hill + 0.25 * fractal(x * 3 + 7 * hill, hill, 6);
}

/// Returns: the brightness from 0 to 1 of the sky.
double sky(double x, double y) {
    return 0.85 - 0.35 * y + 0.18 * fractal(x * 2, y * 4, 3);
}

/// Returns: the brightness from 0 to 1 of the ground on a hill.
double ground(double x, double y, int hill) {
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

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) {
        std::fputs("Usage: sample_image WIDTH HEIGHT FILE\n", stderr);
        return 1;
    }
    const int width = std::atoi(argv[1]);
    const int height = std::atoi(argv[2]);
    std::ofstream file(argv[3], std::ios::binary);
    std::vector<char> row(static_cast<std::size_t>(width));
    std::vector<Column> columns;
    for (int c = 0; c < width; ++c)
        columns.emplace_back(static_cast<double>(c) / height);
    for (int r = 0; r < height; ++r) {
        const double y = static_cast<double>(r) / height;
        for (int c = 0; c < width; ++c) {
            const double grain = lattice(c, r, 99) + lattice(c, r, 98) - 1.0;
            const double light = columns[static_cast<std::size_t>(c)].brightness(y);
            const double level = std::fmin(std::fmax(255.0 * light + 2.5 * grain, 0.0), 255.0);
            row[static_cast<std::size_t>(c)] = static_cast<char>(static_cast<unsigned char>(level));
        }
        file.write(row.data(), width);
    }
    file.close();
    if (file.good()) return 0;
    std::fprintf(stderr, "sample_image: cannot write '%s'\n", argv[3]);
    return 1;
}
