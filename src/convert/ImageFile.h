#pragma once

#include <string>
#include <vector>

#include "api/tesk.h"
#include "convert/Buffer.h"
#include "convert/Metadata.h"

namespace qmx {

/// An image as its reader found it, or as its writer is to write it: rows of pixels without gaps, as
/// the C interface has them.
struct ImageFile {
    tesk_image geometry = TESK_IMAGE_INIT;
    Buffer buffer;
    /// Where in the buffer the pixels begin. What stands before them was the head of a file.
    std::size_t pixelsAtByte = 0;
    Metadata metadata;
    /// What the user should know, one sentence each.
    std::vector<std::string> notes;

    unsigned char* pixels() { return buffer.bytes.get() + pixelsAtByte; }
    const unsigned char* pixels() const { return buffer.bytes.get() + pixelsAtByte; }
    std::size_t rowBytes() const { return std::size_t{geometry.width} * geometry.bytes_per_pixel; }
    std::size_t sampleCount() const { return rawBytes() / (geometry.bytes_per_pixel == 2 ? 2 : 1); }
    /// Returns: a sample, counted along the rows, with those of all channels.
    unsigned sample(std::size_t index) const {
        const unsigned char* samples = pixels();
        return geometry.bytes_per_pixel == 2 ? samples[2 * index] + 256U * samples[2 * index + 1]
                                             : samples[index];
    }
    std::size_t rawBytes() const { return rowBytes() * geometry.height; }
    bool isColour() const { return geometry.bytes_per_pixel == 3; }
};

/// What readers need to know of the arguments.
struct ReadOptions {
    std::uint64_t mostPixels = 500'000'000;
    bool leavesOutOpaqueAlpha = false;
};

}  // namespace qmx
