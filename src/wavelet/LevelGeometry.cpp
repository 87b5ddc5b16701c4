#include "wavelet/LevelGeometry.h"

#include <algorithm>
#include <cstdint>

namespace qmx {
namespace {

/// Above this row pitch (in samples of the plane) and from this number of sample distances on, a
/// level is wide and tall.
constexpr std::int64_t kWideStrideSamples = 512;
constexpr int kTallDistances = 512;

}  // namespace

int levelCount(int width, int height) {
    const int shorterHalf = std::min(width, height) / 2;
    if (shorterHalf <= 0) return -1;
    int levels = kMaxLevels;
    while ((1 << levels) > shorterHalf)
        --levels;
    return levels;
}

int LevelGeometry::filteredColumns() const {
    const bool wide = static_cast<std::int64_t>(strideSamples) * step > kWideStrideSamples;
    const bool tall = (height - 1) / step >= kTallDistances;
    return wide && tall ? width / step : samplesPerRow();
}

}  // namespace qmx
