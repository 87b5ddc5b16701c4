#include "convert/PngMetadata.h"

#include <algorithm>
#include <cstring>

#include "convert/Utf8.h"

namespace qmx {
namespace {

constexpr char kXmpKey[] = "XML:com.adobe.xmp";
constexpr char kDescriptionKey[] = "Description";
constexpr std::size_t kFrameCountBytes = 4;

struct NamedFlag {
    png_uint_32 flag;
    const char* name;
};

/// Chunks that libpng reads and a trailer does not keep.
constexpr NamedFlag kOtherFlags[] = {
    {PNG_INFO_gAMA, "gAMA"}, {PNG_INFO_sBIT, "sBIT"}, {PNG_INFO_cHRM, "cHRM"}, {PNG_INFO_bKGD, "bKGD"},
    {PNG_INFO_hIST, "hIST"}, {PNG_INFO_oFFs, "oFFs"}, {PNG_INFO_tIME, "tIME"}, {PNG_INFO_pCAL, "pCAL"},
    {PNG_INFO_sRGB, "sRGB"}, {PNG_INFO_sPLT, "sPLT"}, {PNG_INFO_sCAL, "sCAL"}};

int takeOther(png_structp png, png_unknown_chunkp chunk) {
    const bool isCritical = (chunk->name[0] & 0x20) == 0;
    if (isCritical) return 0;
    auto* others = static_cast<PngOtherChunks*>(png_get_user_chunk_ptr(png));
    if (std::memcmp(chunk->name, "acTL", 4) == 0 && chunk->size >= kFrameCountBytes)
        others->frames = png_get_uint_32(chunk->data);
    const auto* name = reinterpret_cast<const char*>(chunk->name);
    const auto isKnown = [name](const auto& known) { return std::strcmp(known.data(), name) == 0; };
    const auto end = others->names.begin() + static_cast<std::ptrdiff_t>(others->count);
    if (others->count < PngOtherChunks::kMostNames && std::none_of(others->names.begin(), end, isKnown))
        std::memcpy(others->names[others->count++].data(), name, 4);
    return 1;
}

/// Returns: whether the text has a place in metadata.
bool takeText(const png_text& text, Metadata& metadata) {
    const bool isUtf8 = text.compression >= PNG_ITXT_COMPRESSION_NONE;
    const std::size_t length = isUtf8 ? text.itxt_length : text.text_length;
    const std::string words = text.text == nullptr ? "" : std::string(text.text, length);
    if (std::strcmp(text.key, kXmpKey) == 0 && metadata.xmp.empty()) {
        metadata.xmp = words;
        return true;
    }
    if (std::strcmp(text.key, kDescriptionKey) == 0 && metadata.description.empty()) {
        metadata.description = isUtf8 ? words : latin1ToUtf8(words);
        return true;
    }
    return false;
}

const char* chunkOf(const png_text& text) {
    if (text.compression >= PNG_ITXT_COMPRESSION_NONE) return "iTXt";
    return text.compression == PNG_TEXT_COMPRESSION_NONE ? "tEXt" : "zTXt";
}

void takeTexts(png_structp png, png_infop info, Metadata& metadata, std::vector<std::string>& lost) {
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(png, info, &texts, &count);
    for (int i = 0; i < count; ++i)
        if (!takeText(texts[i], metadata)) lost.emplace_back(chunkOf(texts[i]));
}

void takeProfiles(png_structp png, png_infop info, Metadata& metadata) {
    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 size = 0;
    int compression = 0;
    if (png_get_iCCP(png, info, &name, &compression, &profile, &size) != 0)
        metadata.icc.assign(reinterpret_cast<const char*>(profile), size);
    png_bytep exif = nullptr;
    if (png_get_eXIf_1(png, info, &size, &exif) != 0)
        metadata.exif.assign(reinterpret_cast<const char*>(exif), size);
}

void takeResolution(png_structp png, png_infop info, Metadata& metadata, std::vector<std::string>& lost) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = 0;
    if (png_get_pHYs(png, info, &x, &y, &unit) == 0) return;
    if (unit == PNG_RESOLUTION_METER) {
        metadata.resolution = Resolution{x, y};
    } else {
        lost.emplace_back("pHYs");
    }
}

}  // namespace

void PngOtherChunks::watch(png_structp png) {
    png_set_read_user_chunk_fn(png, this, takeOther);
}

void takeMetadata(png_structp png, png_infop info, const PngOtherChunks& others, Metadata& metadata) {
    std::vector<std::string> lost;
    takeProfiles(png, info, metadata);
    takeTexts(png, info, metadata, lost);
    takeResolution(png, info, metadata, lost);
    for (const NamedFlag& other : kOtherFlags)
        if (png_get_valid(png, info, other.flag) != 0) lost.emplace_back(other.name);
    for (std::size_t i = 0; i < others.count; ++i)
        lost.emplace_back(others.names[i].data());
    std::sort(lost.begin(), lost.end());
    lost.erase(std::unique(lost.begin(), lost.end()), lost.end());
    std::string names;
    for (const std::string& name : lost)
        names += (names.empty() ? "" : ", ") + name;
    if (!lost.empty())
        metadata.notKept.push_back({(lost.size() == 1 ? "PNG chunk " : "PNG chunks ") + names, lost.size() > 1});
}

void putMetadata(png_structp png, png_infop info, const Metadata& metadata) {
    const auto bytesOf = [](const std::string& text) {
        return reinterpret_cast<png_bytep>(const_cast<char*>(text.data()));
    };
    if (!metadata.icc.empty())
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, bytesOf(metadata.icc),
                     static_cast<png_uint_32>(metadata.icc.size()));
    if (!metadata.exif.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(metadata.exif.size()), bytesOf(metadata.exif));
    if (metadata.resolution)
        png_set_pHYs(png, info, metadata.resolution->pixelsPerMetreX, metadata.resolution->pixelsPerMetreY,
                     PNG_RESOLUTION_METER);
    png_text texts[2] = {};
    int count = 0;
    for (const auto& [key, words] : {std::pair<const char*, const std::string*>{kXmpKey, &metadata.xmp},
                                     {kDescriptionKey, &metadata.description}}) {
        if (words->empty()) continue;
        png_text& text = texts[count++];
        text.compression = PNG_ITXT_COMPRESSION_NONE;
        text.key = const_cast<char*>(key);
        text.text = const_cast<char*>(words->c_str());
        text.lang = const_cast<char*>("");
        text.lang_key = const_cast<char*>("");
    }
    if (count > 0) png_set_text(png, info, texts, count);
}

}  // namespace qmx
