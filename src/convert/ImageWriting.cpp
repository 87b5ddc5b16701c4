#include "convert/ImageWriting.h"

#include "convert/PlainWriters.h"
#include "convert/PngWriter.h"
#include "convert/RawFile.h"
#include "convert/Refusal.h"
#include "convert/TiffWriter.h"

namespace qmx {
namespace {

bool isPnm(FileFormat format) {
    return format == FileFormat::pgm || format == FileFormat::ppm || format == FileFormat::pnm ||
           format == FileFormat::pam;
}

}  // namespace

void requireHolds(FileFormat format, const tesk_image& geometry) {
    const bool isColour = geometry.bytes_per_pixel == 3;
    if (format == FileFormat::pgm && isColour)
        throw Refusal{"is RGB, which PGM does not hold: PPM does"};
    if (format == FileFormat::ppm && !isColour)
        throw Refusal{"is gray, which PPM does not hold: PGM does"};
    const bool isBitmap = geometry.bytes_per_pixel == 1 && geometry.bits_per_pixel == 1;
    if (format == FileFormat::pbm && !isBitmap)
        throw Refusal{
            "has more than 1 bit for each pixel, which PBM does not hold: PGM and PPM do"};
    if (geometry.width == 0 || geometry.height == 0) throw Refusal{"has no pixels"};
}

std::vector<LostPart> partsLostIn(FileFormat format, const ImageFile& image) {
    const Metadata& metadata = image.metadata;
    const bool isPng = format == FileFormat::png;
    const bool isTiff = format == FileFormat::tiff;
    std::vector<LostPart> lost = metadata.notKept;
    const auto add = [&lost](bool isLost, const char* words) {
        if (isLost) lost.push_back({words, false});
    };
    add(!metadata.icc.empty() && !isPng && !isTiff, "the colour profile");
    add(!metadata.exif.empty() && !isPng, "the EXIF data");
    add(!metadata.xmp.empty() && !isPng && !isTiff, "the XMP data");
    add(!metadata.description.empty() && !isPng && !isTiff, "the description");
    add(metadata.resolution.has_value() && !isPng && !isTiff, "the resolution");
    add(metadata.maxValue != 0 && !isPnm(format), "the maximum value");
    const bool isSigned = metadata.rawType == kSignedRaw;
    add(isSigned && format != FileFormat::raw && format != FileFormat::npy,
        "the sign, as 32768 added to each sample,");
    add(isPng && !keepsProfile(image), "the colour profile, which libpng refuses,");
    // Nobody who writes raw samples has to be told.
    if (format == FileFormat::raw) lost.push_back({"the sides and bits of the image", true, true});
    return lost;
}

void writeImage(ImageFile& image, FileFormat format, IByteSink& sink) {
    switch (format) {
        case FileFormat::png:
            return writePng(image, sink);
        case FileFormat::tiff:
            return writeTiff(image, sink);
        case FileFormat::npy:
            return writeNpy(image, sink);
        case FileFormat::raw:
            return writeRaw(image, sink);
        case FileFormat::pam:
            return writePam(image, sink);
        case FileFormat::pbm:
            return writePbm(image, sink);
        default:
            return writePnm(image, sink);
    }
}

}  // namespace qmx
