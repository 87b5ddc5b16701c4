#pragma once

#include <cstdint>
#include <string>

#include "convert/ImageFile.h"

namespace qmx {

// What all readers refuse, in the same words. Each throws Refusal.

/// Requires of an image that a stream can hold it and that it is not too large. To be called before anything
/// is allocated for it.
void requireSides(std::uint64_t width, std::uint64_t height, const ReadOptions& options);

/// Requires that an image is not too large.
void requirePixelCount(std::uint64_t width, std::uint64_t height, const ReadOptions& options);

/// Sets the sides and the bytes of a pixel, after requireSides. bits: 0 where they are to be found.
void setGeometry(ImageFile& image, std::uint64_t width, std::uint64_t height,
                 unsigned bytesPerPixel, unsigned bitsPerSample);

/// Says that colours take the place of their numbers in a palette, which somebody may have counted on.
void notePalette(ImageFile& image);

[[noreturn]] void refuseAlpha();
[[noreturn]] void refuseDeepColour();
/// what: the kind of samples, "floating-point samples".
[[noreturn]] void refuseSamples(const std::string& what, const std::string& instead);
[[noreturn]] void refusePages(std::uint64_t count, const std::string& instead);
[[noreturn]] void refuseColours(const std::string& what);
/// The file ends in a row, counted from 1.
[[noreturn]] void refuseShortFile(std::uint64_t row, std::uint64_t height);

/// Requires: fewer than all bytes of an image are there.
[[noreturn]] void refuseShortPixels(std::uint64_t presentBytes, std::uint64_t rowBytes,
                                    std::uint64_t height);

}  // namespace qmx
