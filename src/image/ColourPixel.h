#pragma once

namespace qmx {

// The reversible colour transform of one pixel. Format: docs/format.md, 5 Colour transform.

/// Three samples of a pixel: red, green, blue before the transform; luma, red minus green, blue
/// minus green after it.
struct ColourPixel {
    int first;
    int second;
    int third;
};

constexpr ColourPixel forwardColour(int red, int green, int blue) {
    return {(red + 2 * green + blue) >> 2, red - green, blue - green};
}

/// The three values may be anything that a damaged stream makes of them: sums wrap.
constexpr ColourPixel inverseColour(int luma, int redDifference, int blueDifference) {
    const auto red = static_cast<unsigned>(redDifference);
    const auto blue = static_cast<unsigned>(blueDifference);
    const int quarterOfBoth = static_cast<int>(red + blue) >> 2;
    const unsigned green = static_cast<unsigned>(luma) - static_cast<unsigned>(quarterOfBoth);
    return {static_cast<int>(green + red), static_cast<int>(green), static_cast<int>(green + blue)};
}

}  // namespace qmx
