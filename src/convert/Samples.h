#pragma once

#include <cstddef>
#include <span>

#include "convert/ImageFile.h"

namespace qmx {

// What is done to samples on their way, always without loss.

/// Turns 16-bit samples from one byte order into the other, in place.
void swapSampleBytes(unsigned char* samples, std::size_t sampleCount);

/// Adds 32768 to 16-bit samples, little-endian, modulo 65536, in place: what was signed keeps its order as an
/// unsigned number. A second time undoes it.
void flipSampleSigns(unsigned char* samples, std::size_t sampleCount);

/// Spreads samples of 1, 2 or 4 bits, packed from the highest bits of a byte on, over a byte each.
void unpackSamples(const unsigned char* packed, unsigned bits, unsigned char* samples,
                   std::size_t sampleCount);
/// The other way round. The last byte is filled up with zeros.
void packSamples(const unsigned char* samples, unsigned bits, unsigned char* packed,
                 std::size_t sampleCount);

struct PaletteColour {
    unsigned char red;
    unsigned char green;
    unsigned char blue;
};

/// Replaces numbers, a byte for each pixel, by the colours that have them. Returns: whether each number has one;
/// if not, the image stays as it is. Requires: the geometry is that of RGB.
bool expandPalette(ImageFile& image, std::span<const PaletteColour> palette);

/// Takes away the last channel of each pixel. opaque: the bytes that it has to have everywhere.
/// Throws: Refusal where it has not.
void removeOpaqueChannel(unsigned char* pixels, std::size_t pixelCount, std::size_t pixelBytes,
                         ByteView opaque);

/// An alpha channel is left out only where it says nothing. Throws: Refusal.
[[noreturn]] void refuseTransparency();

}  // namespace qmx
