#include "wavelet/LevelGeometry.h"

#include <algorithm>
#include <cstdint>

namespace qmx {
namespace {

/// Above this row pitch (in samples of the plane) and from this number of sample distances on, a
/// level is wide and tall.
constexpr std::int64_t kWideStrideSamples = 512;
constexpr int kTallDistances = 512;

constexpr std::int64_t kFewestSamplesForRows = 1 << 16;
/// Twice the rows that are in work at one time.
constexpr int kFewestRowsForRows = 256;

}  // namespace

int levelCount(int width, int height) {
    const int shorterHalf = std::min(width, height) / 2;
    if (shorterHalf <= 0) return -1;
    int levels = kMaxLevels;
    while ((1 << levels) > shorterHalf)
        --levels;
    return levels;
}

bool goesByRows(int width, int height) {
    return levelCount(width, height) > 0 && height >= kFewestRowsForRows &&
           std::int64_t{width} * height >= kFewestSamplesForRows;
}

int LevelGeometry::filteredColumns() const {
    const bool wide = static_cast<std::int64_t>(strideSamples) * step > kWideStrideSamples;
    const bool tall = (height - 1) / step >= kTallDistances;
    return wide && tall ? width / step : samplesPerRow();
}

int coarsestInverseStep(int levels) {
    return levels <= 1 ? 1 : 1 << (levels - 1);
}

}  // namespace qmx
