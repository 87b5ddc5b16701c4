#include "convert/TiffWriter.h"

#include <algorithm>
#include <vector>

#include "convert/CTiffFile.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

constexpr int kCompressionLevel = 1;
constexpr std::uint32_t kStripBytes = 1 << 18;

unsigned depthOf(const ImageFile& image) {
    if (image.geometry.bytes_per_pixel == 2) return 16;
    const unsigned bits = image.geometry.bits_per_pixel;
    const bool isPacked = !image.isColour() && (bits == 1 || bits == 2 || bits == 4);
    return isPacked ? bits : 8;
}

void setLayout(TIFF* tiff, const ImageFile& image) {
    const auto rowBytes = static_cast<std::uint32_t>(image.rowBytes());
    TIFFSetField(tiff, TIFFTAG_IMAGEWIDTH, image.geometry.width);
    TIFFSetField(tiff, TIFFTAG_IMAGELENGTH, image.geometry.height);
    TIFFSetField(tiff, TIFFTAG_BITSPERSAMPLE, depthOf(image));
    TIFFSetField(tiff, TIFFTAG_SAMPLESPERPIXEL, image.isColour() ? 3 : 1);
    TIFFSetField(tiff, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tiff, TIFFTAG_PHOTOMETRIC,
                 image.isColour() ? PHOTOMETRIC_RGB : PHOTOMETRIC_MINISBLACK);
    TIFFSetField(tiff, TIFFTAG_COMPRESSION, COMPRESSION_ADOBE_DEFLATE);
    TIFFSetField(tiff, TIFFTAG_ZIPQUALITY, kCompressionLevel);
    if (depthOf(image) >= 8) TIFFSetField(tiff, TIFFTAG_PREDICTOR, PREDICTOR_HORIZONTAL);
    TIFFSetField(tiff, TIFFTAG_ROWSPERSTRIP, kStripBytes / rowBytes + 1);
}

void setMetadata(TIFF* tiff, const Metadata& metadata) {
    if (!metadata.icc.empty())
        TIFFSetField(tiff, TIFFTAG_ICCPROFILE, static_cast<std::uint32_t>(metadata.icc.size()),
                     metadata.icc.data());
    if (!metadata.xmp.empty())
        TIFFSetField(tiff, TIFFTAG_XMLPACKET, static_cast<std::uint32_t>(metadata.xmp.size()),
                     metadata.xmp.data());
    if (!metadata.description.empty())
        TIFFSetField(tiff, TIFFTAG_IMAGEDESCRIPTION, metadata.description.c_str());
    if (!metadata.resolution) return;
    TIFFSetField(tiff, TIFFTAG_RESOLUTIONUNIT, RESUNIT_CENTIMETER);
    constexpr double kCentimetresOfMetre = 100;
    TIFFSetField(tiff, TIFFTAG_XRESOLUTION,
                 metadata.resolution->pixelsPerMetreX / kCentimetresOfMetre);
    TIFFSetField(tiff, TIFFTAG_YRESOLUTION,
                 metadata.resolution->pixelsPerMetreY / kCentimetresOfMetre);
}

void writeRows(CTiffFile& file, const ImageFile& image) {
    const unsigned bits = depthOf(image);
    // libtiff may change what it is given: it gets a copy of each row.
    Buffer line(image.rowBytes());
    for (std::uint32_t r = 0; r < image.geometry.height; ++r) {
        const unsigned char* row = image.pixels() + r * image.rowBytes();
        if (bits < 8) {
            packSamples(row, bits, line.bytes.get(), image.geometry.width);
        } else {
            std::copy(row, row + image.rowBytes(), line.bytes.get());
        }
        if (TIFFWriteScanline(file.get(), line.bytes.get(), r, 0) != 1)
            throw Refusal{"no TIFF can be made of it: " + file.words()};
    }
}

}  // namespace

void writeTiff(const ImageFile& image, IByteSink& sink) {
    std::vector<unsigned char> written;
    // Else it would be copied as it grows. What is not written costs no memory.
    written.reserve(image.rawBytes());
    CTiffFile file(written, image.rawBytes());
    setLayout(file.get(), image);
    setMetadata(file.get(), image.metadata);
    writeRows(file, image);
    if (!file.close()) throw Refusal{"no TIFF can be made of it: " + file.words()};
    sink.write(ByteView(written));
}

}  // namespace qmx
