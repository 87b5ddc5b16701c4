#include "convert/TiffLayout.h"

#include <algorithm>
#include <iterator>

#include "convert/ImageChecks.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

struct NamedColours {
    std::uint16_t photometric;
    const char* name;
};

constexpr NamedColours kOtherColours[] = {
    {PHOTOMETRIC_MASK, "a mask"},    {PHOTOMETRIC_SEPARATED, "CMYK"},
    {PHOTOMETRIC_YCBCR, "YCbCr"},    {PHOTOMETRIC_CIELAB, "CIE Lab"},
    {PHOTOMETRIC_ICCLAB, "ICC Lab"}, {PHOTOMETRIC_ITULAB, "ITU Lab"},
    {PHOTOMETRIC_LOGL, "in LogL"},   {PHOTOMETRIC_LOGLUV, "in LogLuv"}};

/// The compressions that lose nothing.
constexpr std::uint16_t kExactCompressions[] = {
    COMPRESSION_NONE,      COMPRESSION_CCITTRLE, COMPRESSION_CCITTRLEW, COMPRESSION_CCITTFAX3,
    COMPRESSION_CCITTFAX4, COMPRESSION_LZW,      COMPRESSION_PACKBITS,  COMPRESSION_ADOBE_DEFLATE,
    COMPRESSION_DEFLATE,   COMPRESSION_LZMA,     COMPRESSION_ZSTD};

void requireOnePage(CTiffFile& file) {
    const auto pages = static_cast<std::uint64_t>(TIFFNumberOfDirectories(file.get()));
    file.requireSound();
    if (pages > 1) refusePages(pages, "tiffsplit makes files of them");
    if (TIFFSetDirectory(file.get(), 0) != 1) file.refuse();
}

void requireExactCompression(CTiffFile& file) {
    const auto method = file.number<std::uint16_t>(TIFFTAG_COMPRESSION, COMPRESSION_NONE);
    if (method == COMPRESSION_JPEG || method == COMPRESSION_OJPEG)
        throw Refusal{
            "is JPEG within TIFF, which is lossy: its stream would be several times as long"};
    if (std::find(std::begin(kExactCompressions), std::end(kExactCompressions), method) ==
        std::end(kExactCompressions))
        throw Refusal{"is compressed by method " + std::to_string(method) +
                      ", which may be lossy: tiffcp -c none takes it apart"};
    if (TIFFIsCODECConfigured(method) == 0)
        throw Refusal{"is compressed by method " + std::to_string(method) +
                      ", which this libtiff does not know"};
}

void requireWholeNumbers(CTiffFile& file, unsigned bits) {
    const char* const instead = "convert it to unsigned samples of 8 or 16 bits first";
    switch (file.number<std::uint16_t>(TIFFTAG_SAMPLEFORMAT, SAMPLEFORMAT_UINT)) {
        case SAMPLEFORMAT_INT:
            refuseSamples("signed samples", instead);
        case SAMPLEFORMAT_IEEEFP:
            refuseSamples("floating-point samples", instead);
        case SAMPLEFORMAT_COMPLEXINT:
        case SAMPLEFORMAT_COMPLEXIEEEFP:
            refuseSamples("complex samples", instead);
        default:
            break;
    }
    if (bits > 16) refuseSamples("samples of " + std::to_string(bits) + " bits", instead);
    if (bits != 1 && bits != 2 && bits != 4 && bits != 8 && bits != 16)
        refuseSamples("samples packed to " + std::to_string(bits) + " bits",
                      "unpack them to 16 bits first");
}

void requireColours(std::uint16_t photometric) {
    for (const NamedColours& other : kOtherColours)
        if (photometric == other.photometric) refuseColours(other.name);
    const bool isKnown = photometric <= PHOTOMETRIC_PALETTE || photometric == PHOTOMETRIC_CFA;
    if (!isKnown) refuseColours("of colours numbered " + std::to_string(photometric));
}

void requireChannels(CTiffFile& file, TiffLayout& layout, const ReadOptions& options) {
    const unsigned own = layout.isColour ? 3 : 1;
    if (layout.channels != own && layout.channels != own + 1)
        refuseColours("an image of " + std::to_string(layout.channels) + " channels");
    if (layout.isColour && layout.bits == 16) refuseDeepColour();
    if (layout.channels > 1 && layout.bits < 8)
        refuseSamples("several samples within a byte", "convert it to samples of 8 bits first");
    layout.hasAlpha = layout.channels == own + 1;
    if (!layout.hasAlpha) return;
    std::uint16_t count = 0;
    std::uint16_t* kinds = nullptr;
    const bool isNamed = TIFFGetField(file.get(), TIFFTAG_EXTRASAMPLES, &count, &kinds) == 1 &&
                         count == 1 && kinds[0] != EXTRASAMPLE_UNSPECIFIED;
    if (!isNamed) refuseColours("an image of " + std::to_string(layout.channels) + " channels");
    if (!options.leavesOutOpaqueAlpha) refuseAlpha();
}

void addNotes(CTiffFile& file, std::uint16_t photometric, ImageFile& image) {
    if (photometric == PHOTOMETRIC_MINISWHITE) {
        image.notes.emplace_back(
            "0 is white in this file: the samples are kept as they are, their meaning is not");
        image.metadata.notKept.push_back({"its meaning of 0 as white", false, true});
    }
    if (photometric == PHOTOMETRIC_PALETTE) notePalette(image);
    if (photometric == PHOTOMETRIC_CFA)
        image.notes.emplace_back("the mosaic of a colour filter array is kept as gray");
    const auto orientation = file.number<std::uint16_t>(TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    if (orientation == ORIENTATION_TOPLEFT) return;
    image.notes.push_back("orientation " + std::to_string(orientation) +
                          " is neither applied nor kept: the rows are as they were");
    image.metadata.notKept.push_back({"orientation " + std::to_string(orientation), false, true});
}

}  // namespace

TiffLayout requireLayout(CTiffFile& file, const ReadOptions& options, ImageFile& image) {
    requireOnePage(file);
    TiffLayout layout;
    layout.width = file.number<std::uint32_t>(TIFFTAG_IMAGEWIDTH, 0);
    layout.height = file.number<std::uint32_t>(TIFFTAG_IMAGELENGTH, 0);
    layout.bits = file.number<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1);
    layout.channels = file.number<std::uint16_t>(TIFFTAG_SAMPLESPERPIXEL, 1);
    const auto depth = file.number<std::uint32_t>(TIFFTAG_IMAGEDEPTH, 1);
    if (depth > 1) refusePages(depth, "save its planes one by one");
    layout.isApart = file.number<std::uint16_t>(TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG) ==
                         PLANARCONFIG_SEPARATE &&
                     layout.channels > 1;
    std::uint16_t photometric = 0;
    if (TIFFGetField(file.get(), TIFFTAG_PHOTOMETRIC, &photometric) != 1)
        throw Refusal{"is a damaged TIFF: it does not say what its colours are"};
    requireExactCompression(file);
    requireColours(photometric);
    requireWholeNumbers(file, layout.bits);
    layout.isColour = photometric == PHOTOMETRIC_RGB;
    layout.isPalette = photometric == PHOTOMETRIC_PALETTE;
    requireSides(layout.width, layout.height, options);
    requireChannels(file, layout, options);
    addNotes(file, photometric, image);
    return layout;
}

}  // namespace qmx
