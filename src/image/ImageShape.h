#pragma once

#include <cstdint>

namespace qmx {

/// The size of an image: pixels of a row, rows, colour planes.
struct ImageShape {
    int width;
    int height;
    int planes;

    std::uint64_t samplesPerPlane() const {
        return static_cast<std::uint64_t>(width) * static_cast<std::uint64_t>(height);
    }

    /// Returns: the shape at 1 : 2^levels, sides rounded up.
    ImageShape reducedBy(int levels) const {
        const int last = (1 << levels) - 1;
        return {(width + last) >> levels, (height + last) >> levels, planes};
    }
};

}  // namespace qmx
