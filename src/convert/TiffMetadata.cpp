// What a TIFF says besides its pixels.

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "convert/TiffLayout.h"
#include "convert/Utf8.h"

namespace qmx {
namespace {

constexpr double kCentimetresOfMetre = 100;
constexpr double kCentimetresOfInch = 2.54;

std::string bytesOfField(CTiffFile& file, std::uint32_t tag) {
    std::uint32_t count = 0;
    void* bytes = nullptr;
    if (TIFFGetField(file.get(), tag, &count, &bytes) != 1) return {};
    return {static_cast<const char*>(bytes), count};
}

std::string description(CTiffFile& file) {
    const char* text = nullptr;
    if (TIFFGetField(file.get(), TIFFTAG_IMAGEDESCRIPTION, &text) != 1) return {};
    return isUtf8(text) ? text : latin1ToUtf8(text);
}

/// Returns: 0 where it is no number of pixels.
std::uint32_t perMetre(float value, double unitsOfMetre) {
    const double pixels = std::round(double{value} * unitsOfMetre);
    const bool isNumber =
        pixels >= 1 && pixels <= double{std::numeric_limits<std::uint32_t>::max()};
    return isNumber ? static_cast<std::uint32_t>(pixels) : 0;
}

/// Returns: whether there is none, or it is kept.
bool takeResolution(CTiffFile& file, Metadata& metadata) {
    float x = 0;
    float y = 0;
    const bool isThere = TIFFGetField(file.get(), TIFFTAG_XRESOLUTION, &x) == 1 &&
                         TIFFGetField(file.get(), TIFFTAG_YRESOLUTION, &y) == 1;
    if (!isThere) return true;
    const auto unit = file.number<std::uint16_t>(TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    // Square pixels of no size are what there is without the tags, too.
    if (unit == RESUNIT_NONE && x == y) return true;
    if (unit != RESUNIT_INCH && unit != RESUNIT_CENTIMETER) return false;
    const double unitsOfMetre =
        unit == RESUNIT_INCH ? kCentimetresOfMetre / kCentimetresOfInch : kCentimetresOfMetre;
    const Resolution resolution{perMetre(x, unitsOfMetre), perMetre(y, unitsOfMetre)};
    if (resolution.pixelsPerMetreX == 0 || resolution.pixelsPerMetreY == 0) return false;
    metadata.resolution = resolution;
    return true;
}

/// Returns: whether there is a tag of one or two numbers of 16 bits. numbers gets them.
bool hasNumbers(CTiffFile& file, std::uint32_t tag, std::uint16_t (&numbers)[2]) {
    return TIFFGetField(file.get(), tag, &numbers[0], &numbers[1]) == 1;
}

/// Adds tags about the page that libtiff does not list, because it has a place of its own for them. Images below
/// the page may be what a file is for: raw files of cameras have a small picture on their page.
void addTagsOfPage(CTiffFile& file, std::vector<std::uint32_t>& tags) {
    std::uint16_t count = 0;
    std::uint64_t* pages = nullptr;
    if (TIFFGetField(file.get(), TIFFTAG_SUBIFD, &count, &pages) == 1)
        tags.push_back(TIFFTAG_SUBIFD);
    float position = 0;
    constexpr std::uint32_t kPositions[] = {TIFFTAG_XPOSITION, TIFFTAG_YPOSITION};
    for (const std::uint32_t tag : kPositions)
        if (TIFFGetField(file.get(), tag, &position) == 1) tags.push_back(tag);
    std::uint32_t kind = 0;
    if (TIFFGetField(file.get(), TIFFTAG_SUBFILETYPE, &kind) == 1 && kind != 0)
        tags.push_back(TIFFTAG_SUBFILETYPE);
    std::uint16_t numbers[2] = {};
    if (hasNumbers(file, TIFFTAG_PAGENUMBER, numbers)) tags.push_back(TIFFTAG_PAGENUMBER);
}

/// Adds those about what samples mean.
void addTagsOfSamples(CTiffFile& file, std::vector<std::uint32_t>& tags) {
    std::uint16_t numbers[2] = {};
    constexpr std::uint32_t kNumbers[] = {TIFFTAG_THRESHHOLDING, TIFFTAG_MINSAMPLEVALUE,
                                          TIFFTAG_HALFTONEHINTS};
    for (const std::uint32_t tag : kNumbers)
        if (hasNumbers(file, tag, numbers)) tags.push_back(tag);
    // Without the tag libtiff has one that says what the bits say.
    const unsigned most = (1U << file.number<std::uint16_t>(TIFFTAG_BITSPERSAMPLE, 1)) - 1;
    if (hasNumbers(file, TIFFTAG_MAXSAMPLEVALUE, numbers) && numbers[0] != most)
        tags.push_back(TIFFTAG_MAXSAMPLEVALUE);
    float* levels = nullptr;
    if (TIFFGetField(file.get(), TIFFTAG_REFERENCEBLACKWHITE, &levels) == 1)
        tags.push_back(TIFFTAG_REFERENCEBLACKWHITE);
    std::uint16_t* curves[3] = {};
    if (TIFFGetField(file.get(), TIFFTAG_TRANSFERFUNCTION, &curves[0], &curves[1], &curves[2]) == 1)
        tags.push_back(TIFFTAG_TRANSFERFUNCTION);
}

/// libtiff lists the tags that say nothing about where and how the samples stand.
std::vector<std::uint32_t> otherTags(CTiffFile& file) {
    constexpr std::uint32_t kTaken[] = {TIFFTAG_IMAGEDESCRIPTION, TIFFTAG_ICCPROFILE,
                                        TIFFTAG_XMLPACKET,        TIFFTAG_PREDICTOR,
                                        TIFFTAG_GROUP3OPTIONS,    TIFFTAG_GROUP4OPTIONS};
    std::vector<std::uint32_t> tags;
    for (int i = 0; i < TIFFGetTagListCount(file.get()); ++i) {
        const std::uint32_t tag = TIFFGetTagListEntry(file.get(), i);
        if (std::find(std::begin(kTaken), std::end(kTaken), tag) == std::end(kTaken))
            tags.push_back(tag);
    }
    return tags;
}

}  // namespace

void takeMetadata(CTiffFile& file, Metadata& metadata) {
    metadata.icc = bytesOfField(file, TIFFTAG_ICCPROFILE);
    metadata.xmp = bytesOfField(file, TIFFTAG_XMLPACKET);
    metadata.description = description(file);
    std::vector<std::uint32_t> tags = otherTags(file);
    addTagsOfPage(file, tags);
    addTagsOfSamples(file, tags);
    if (!takeResolution(file, metadata))
        tags.insert(tags.end(), {TIFFTAG_XRESOLUTION, TIFFTAG_YRESOLUTION});
    if (tags.empty()) return;
    std::sort(tags.begin(), tags.end());
    std::string words = tags.size() == 1 ? "TIFF tag" : "TIFF tags";
    for (std::size_t i = 0; i < tags.size(); ++i)
        words += (i == 0 ? " " : ", ") + std::to_string(tags[i]);
    metadata.notKept.push_back({words, tags.size() > 1});
}

}  // namespace qmx
