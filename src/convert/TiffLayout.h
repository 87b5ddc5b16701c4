#pragma once

#include <cstdint>

#include "convert/CTiffFile.h"
#include "convert/ImageFile.h"

namespace qmx {

/// How the samples of a TIFF stand in its file.
struct TiffLayout {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    unsigned bits = 1;
    unsigned channels = 1;
    bool isPalette = false;
    bool isColour = false;
    bool hasAlpha = false;
    /// Each channel has strips or tiles of its own.
    bool isApart = false;

    unsigned sampleBytes() const { return bits == 16 ? 2 : 1; }
    std::size_t rowBytes() const { return std::size_t{width} * channels * sampleBytes(); }
};

/// Returns: the layout of the first page. Throws: Refusal where no stream can hold it; image gets notes.
TiffLayout requireLayout(CTiffFile& file, const ReadOptions& options, ImageFile& image);

/// Takes what a TIFF says besides its pixels. Throws: std::bad_alloc.
void takeMetadata(CTiffFile& file, Metadata& metadata);

}  // namespace qmx
