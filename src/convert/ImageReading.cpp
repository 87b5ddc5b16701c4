#include "convert/ImageReading.h"

#include <bit>

#include "convert/CTeskCodec.h"
#include "convert/FileFormat.h"
#include "convert/NpyReader.h"
#include "convert/PngReader.h"
#include "convert/PnmReader.h"
#include "convert/Refusal.h"
#include "convert/SampleNotes.h"
#include "convert/TiffReader.h"

namespace qmx {
namespace {

ImageFile readFormat(Buffer file, const ConvertOptions& options) {
    if (options.raw) return readRaw(std::move(file), *options.raw, options.reading);
    switch (formatOfContent(file.view())) {
        case FileFormat::png:
            return readPng(file.view(), options.reading);
        case FileFormat::tiff:
            return readTiff(file.view(), options.reading);
        case FileFormat::npy:
            return readNpy(std::move(file), options.reading);
        default:
            return readPnm(std::move(file), options.reading);
    }
}

/// Sets the bits of a sample to those of --bits, of the file, or of the samples, in this order.
void settleBits(ImageFile& image, unsigned wantedBits, std::uint32_t used) {
    std::uint32_t& bits = image.geometry.bits_per_pixel;
    const auto usedCount = static_cast<std::uint32_t>(std::bit_width(used));
    if (wantedBits != 0 && !image.isColour()) bits = wantedBits;
    if (bits == 0) bits = std::max(usedCount, 1U);
    const std::uint32_t most = image.geometry.bytes_per_pixel == 2 ? 16 : 8;
    if (bits > most)
        throw Refusal{"has samples of " + std::to_string(most) + " bits, fewer than --bits says"};
    if (usedCount > bits)
        throw Refusal{"has samples of " + std::to_string(usedCount) + " bits, more than the " +
                      std::to_string(bits) + " that were announced"};
}

}  // namespace

ImageFile readImage(Buffer file, const ConvertOptions& options) {
    ImageFile image = readFormat(std::move(file), options);
    const std::uint32_t used = usedBitsOf(image);
    settleBits(image, options.bits, used);
    addSampleNotes(image, used);
    // Other maximum values say nothing that the bits do not.
    if (image.metadata.maxValue == (1U << image.geometry.bits_per_pixel) - 1)
        image.metadata.maxValue = 0;
    return image;
}

}  // namespace qmx
