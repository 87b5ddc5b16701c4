#include "wavelet/LevelGeometry.h"

#include <algorithm>
#include <cstdint>

namespace qmx {
namespace {

/// Above this pitch of a row, times step, and from this number of sample distances on, a level is wide and
/// tall.
constexpr std::int64_t kWidePitchSamples = 512;
constexpr int kTallDistances = 512;
/// Instead of the pitch, the width rounded up to a multiple of 8, the width itself may be compared with
/// kWidePitchSamples / step: a multiple of 8 is exceeded by both or by none.
static_assert(kWidePitchSamples % (8 << (kMaxLevels - 1)) == 0);

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
    const bool wide = std::int64_t{width} * step > kWidePitchSamples;
    const bool tall = (height - 1) / step >= kTallDistances;
    return wide && tall ? width / step : samplesPerRow();
}

}  // namespace qmx
