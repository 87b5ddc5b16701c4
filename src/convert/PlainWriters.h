#pragma once

#include "convert/IByteSink.h"
#include "convert/ImageFile.h"

namespace qmx {

// Writers of formats that have a short head in front of the samples. 16-bit samples are turned within the image,
// which is of no use afterwards. Each throws Refusal.

/// PGM for gray, PPM for RGB. The maximum value is that of the metadata, else that of the bits of a sample.
void writePnm(ImageFile& image, IByteSink& sink);
/// Bits, 1 for black. Requires: samples of one bit.
void writePbm(const ImageFile& image, IByteSink& sink);
void writePam(ImageFile& image, IByteSink& sink);
/// uint8 or uint16, little-endian, and int16 where the samples were signed.
void writeNpy(ImageFile& image, IByteSink& sink);
/// Samples only, as they stood in the raw file that the stream was made from.
void writeRaw(ImageFile& image, IByteSink& sink);

}  // namespace qmx
