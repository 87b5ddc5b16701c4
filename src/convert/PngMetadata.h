#pragma once

#include "convert/Metadata.h"
#include "convert/PngGuard.h"

namespace qmx {

/// Names of chunks that libpng does not know, as they come.
struct PngOtherChunks {
    static constexpr std::size_t kMostNames = 16;

    std::array<std::array<char, 5>, kMostNames> names{};
    std::size_t count = 0;
    /// Pictures of an animation; 0 for none.
    std::uint32_t frames = 0;

    /// Makes libpng call this for them. Critical ones stay its business.
    void watch(png_structp png);
};

/// Takes what a PNG says besides its pixels. Requires: the file was read to its end.
/// Throws: std::bad_alloc.
void takeMetadata(png_structp png, png_infop info, const PngOtherChunks& others, Metadata& metadata);

/// Gives a PNG what it can hold of metadata. Runs within `completes`.
void putMetadata(png_structp png, png_infop info, const Metadata& metadata);

}  // namespace qmx
