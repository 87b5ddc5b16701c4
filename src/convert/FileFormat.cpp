#include "convert/FileFormat.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "api/tesk.h"
#include "convert/NpyReader.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

struct NamedFormat {
    std::string_view name;
    FileFormat format;
};

constexpr NamedFormat kFormats[] = {
    {"tk", FileFormat::stream}, {"pbm", FileFormat::pbm},  {"pgm", FileFormat::pgm},
    {"ppm", FileFormat::ppm},   {"pnm", FileFormat::pnm},  {"pam", FileFormat::pam},
    {"png", FileFormat::png},   {"tif", FileFormat::tiff}, {"tiff", FileFormat::tiff},
    {"npy", FileFormat::npy},   {"raw", FileFormat::raw}};

/// How a format that is refused begins, at a byte of the file.
struct RefusedFormat {
    std::size_t atByte;
    std::string_view magic;
    const char* words;
};

using namespace std::string_view_literals;

constexpr char kLossy[] = ", which is lossy: its stream would be several times as long";

constexpr RefusedFormat kLossyFormats[] = {{0, "\xFF\xD8\xFF"sv, "a JPEG file"},
                                           {8, "WEBPVP8 "sv, "a WebP file"}};

constexpr char kPerhapsLossy[] =
    ": save it as PNG first where it is lossless; of a lossy one the stream would be several times "
    "as long";

constexpr RefusedFormat kPerhapsLossyFormats[] = {{8, "WEBP"sv, "a WebP file"},
                                                  {4, "jP  \r\n"sv, "a JPEG 2000 file"},
                                                  {0, "\xFF\x4F\xFF\x51"sv, "a JPEG 2000 file"},
                                                  {0, "\xFF\x0A"sv, "a JPEG XL file"},
                                                  {4, "JXL \r\n"sv, "a JPEG XL file"},
                                                  {4, "ftypavif"sv, "an AVIF file"},
                                                  {4, "ftyphei"sv, "a HEIF file"}};

/// Formats that lose nothing, but that this program does not read.
constexpr RefusedFormat kUnread[] = {
    {0, "GIF8"sv, "is a GIF file: save its picture as PNG first"},
    {0, "BM"sv, "is a BMP file: save it as PNG first"},
    {0, "SIMPLE  ="sv,
     "is a FITS file: its samples can be read with --raw WxH:gray16be+SKIP, where they have 16 "
     "bits"},
    {128, "DICM"sv,
     "is a DICOM file: its samples can be read with --raw, where they are not compressed"},
    {0, "\x89HDF\r\n"sv,
     "is an HDF5 file, which may hold many images: save them as PNG, TIFF or NPY first"},
    {0, "\xFF\xD8"sv, "is a damaged JPEG file"},
    {0, "PK\x03\x04"sv, "is a ZIP file, perhaps an .npz: take its arrays out first"},
    {0, "\x1F\x8B"sv, "is compressed by gzip: gunzip it first"},
    {0, "Pf"sv, "has floating-point samples; a stream holds whole numbers of 1 to 16 bits"},
    {0, "PF"sv, "has floating-point samples; a stream holds whole numbers of 1 to 16 bits"}};

std::string_view textOf(ByteView file) {
    return {reinterpret_cast<const char*>(file.data()), file.size()};
}

bool beginsAt(std::string_view text, const RefusedFormat& format) {
    return text.size() > format.atByte && text.substr(format.atByte).starts_with(format.magic);
}

[[noreturn]] void refuseContent(std::string_view text) {
    for (const RefusedFormat& lossy : kLossyFormats)
        if (beginsAt(text, lossy)) throw Refusal{std::string("is ") + lossy.words + kLossy};
    for (const RefusedFormat& other : kPerhapsLossyFormats)
        if (beginsAt(text, other)) throw Refusal{std::string("is ") + other.words + kPerhapsLossy};
    for (const RefusedFormat& other : kUnread)
        if (beginsAt(text, other)) throw Refusal{other.words};
    if (text.empty()) throw Refusal{"is empty"};
    throw Refusal{
        "is neither PNM, PAM, PNG, TIFF, NPY nor a stream; for samples without a head there is "
        "--raw"};
}

bool isTiff(std::string_view text) {
    return text.starts_with("II*\0"sv) || text.starts_with("MM\0*"sv) ||
           text.starts_with("II+\0"sv) || text.starts_with("MM\0+"sv);
}

}  // namespace

bool isStream(ByteView head) {
    tesk_image image = TESK_IMAGE_INIT;
    const tesk_status status = tesk_probe(head.data(), head.size(), &image);
    return status == TESK_OK || status == TESK_UNSUPPORTED_FORMAT;
}

FileFormat formatOfContent(ByteView file) {
    const std::string_view text = textOf(file);
    if (isStream(file)) return FileFormat::stream;
    if (text.starts_with("\x89PNG\r\n\x1A\n"sv)) return FileFormat::png;
    if (isTiff(text)) return FileFormat::tiff;
    if (text.starts_with(kNpyMagic)) return FileFormat::npy;
    if (text.size() > 2 && text[0] == 'P' && text[1] >= '1' && text[1] <= '7')
        return text[1] == '7' ? FileFormat::pam : FileFormat::pnm;
    refuseContent(text);
}

std::optional<FileFormat> formatOfEnding(std::string_view ending) {
    for (const NamedFormat& known : kFormats)
        if (known.name == ending) return known.format;
    return std::nullopt;
}

std::optional<FileFormat> formatOfName(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return std::nullopt;
    std::string ending(name.substr(dot + 1));
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return formatOfEnding(ending);
}

std::optional<FileFormat> takeFormat(std::string_view& output) {
    const std::size_t colon = output.find(':');
    if (colon == std::string_view::npos) return std::nullopt;
    const auto format = formatOfEnding(output.substr(0, colon));
    if (format) output.remove_prefix(colon + 1);
    return format;
}

}  // namespace qmx
