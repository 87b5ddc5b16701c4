#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "convert/Buffer.h"
#include "convert/Metadata.h"
#include "convert/PngGuard.h"

namespace qmx {

/// The chunks of a PNG that decoders may leave out.
struct PngChunks {
    /// How many there are of each name.
    std::map<std::string, std::size_t> counts;
    /// Pictures of an animation; 0 for none.
    std::uint32_t frames = 0;
};

/// Walks over a file. Throws: Refusal where a chunk, but for those of the pixels, is longer than what is left of
/// it; std::bad_alloc.
PngChunks chunksOf(ByteView file);

/// Takes what a PNG says besides its pixels. Requires: the file was read to its end.
/// Throws: std::bad_alloc.
void takeMetadata(png_structp png, png_infop info, const PngChunks& chunks, Metadata& metadata);

/// Gives a PNG what it can hold of metadata. Runs within `completes`.
void putMetadata(png_structp png, png_infop info, const Metadata& metadata);

}  // namespace qmx
