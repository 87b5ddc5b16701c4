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
};

}  // namespace qmx
