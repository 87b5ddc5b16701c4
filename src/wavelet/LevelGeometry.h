#pragma once

namespace qmx {

// Format: docs/format.md, 6.3 Level count to 6.6 Inverse transform.

/// Lines of fewer samples are not filtered. Format: docs/format.md, 6.2 One line.
inline constexpr int kShortestLine = 4;
inline constexpr int kMaxLevels = 5;
/// Orders run from 0 to the number of levels.
inline constexpr int kMaxOrders = kMaxLevels + 1;

/// Returns: the number of decomposition levels for an image of width x height samples: 0 when the
/// smaller side is 2 or 3, -1 when it is 0 or 1.
int levelCount(int width, int height);

/// Returns: how many levels decoders undo for a picture at 1 : 2^reduction of an image of so many levels. An image
/// without levels is filtered once all the same (Quirk 4).
constexpr int levelsToRestore(int levels, int reduction) {
    return reduction == 0 && levels < 1 ? 1 : levels - reduction;
}

/// One level of the transform of a plane: its samples stand at multiples of step.
struct LevelGeometry {
    int width;
    int height;
    int step;

    /// Samples of the level in a row of the plane, and in a column.
    int samplesPerRow() const { return (width - 1) / step + 1; }
    int samplesPerColumn() const { return (height - 1) / step + 1; }

    /// Returns: how many columns of the level are filtered vertically, counted from the left: all,
    /// but on tall, wide levels a last column that no whole step follows is left out (Quirk 9).
    int filteredColumns() const;
};

}  // namespace qmx
