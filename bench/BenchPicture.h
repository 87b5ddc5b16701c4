#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <tesk/tesk.h>
#include <vector>

// The images that the benchmarks work on: raw files, and pictures from formulas.

namespace bench {

using Bytes = std::vector<unsigned char>;

struct Picture {
    std::string name;
    tesk_image image = TESK_IMAGE_INIT;
    Bytes pixels;

    std::size_t planes() const { return image.bytes_per_pixel == 3 ? 3 : 1; }
    std::size_t bytesPerSample() const { return image.bytes_per_pixel == 2 ? 2 : 1; }
    std::size_t samples() const { return pixels.size() / bytesPerSample(); }
    std::size_t rowBytes() const { return std::size_t{image.width} * image.bytes_per_pixel; }
    /// Returns: room enough for a lossless stream of any codec here.
    std::size_t streamRoomBytes() const { return 3 * pixels.size() + 65536; }
};

/// Returns: photograph-like pictures of 3000 x 2000 pixels, one of each sample type.
std::vector<Picture> generatedPictures();

/// Requires: width and height are those of the picture at most.
Picture middleOf(const Picture& picture, std::uint32_t width, std::uint32_t height);

/// Takes the arguments `--image=FILE,BYTES/PIXEL,BITS/SAMPLE,WIDTH,HEIGHT` out of argv and reads those
/// files. Returns: false, after a line on standard error, when one of them is of no use.
bool takePictures(int& argc, char** argv, std::vector<Picture>& pictures);

}  // namespace bench
