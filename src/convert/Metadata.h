#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "convert/LostPart.h"

namespace qmx {

struct Resolution {
    std::uint32_t pixelsPerMetreX;
    std::uint32_t pixelsPerMetreY;
};

/// What an image file holds besides its samples. Format: docs/trailer.md. Strings may hold any bytes.
struct Metadata {
    std::string icc;
    /// As in the eXIf chunk of PNG: a TIFF header and what follows it.
    std::string exif;
    std::string xmp;
    /// UTF-8.
    std::string description;
    std::optional<Resolution> resolution;
    /// The maximum value that a PNM file declares; 0: that of the bits of a sample.
    std::uint32_t maxValue = 0;
    /// How raw samples stood in their file where that was not as streams have them: "gray16be", "int16".
    std::string rawType;
    /// What stands in the file and in none of the above.
    std::vector<LostPart> notKept;
};

}  // namespace qmx
