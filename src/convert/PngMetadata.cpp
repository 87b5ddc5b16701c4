#include "convert/PngMetadata.h"

#include <cstring>

#include "convert/Refusal.h"
#include "convert/Utf8.h"

namespace qmx {
namespace {

constexpr char kXmpKey[] = "XML:com.adobe.xmp";
constexpr char kDescriptionKey[] = "Description";
constexpr std::size_t kSignatureBytes = 8;
/// Length and name in front of the data, a checksum behind it.
constexpr std::size_t kChunkHeadBytes = 8;
constexpr std::size_t kChunkExtraBytes = kChunkHeadBytes + 4;
constexpr std::size_t kFrameCountBytes = 4;
/// More kinds than there are were made to annoy.
constexpr std::size_t kMostNames = 64;

/// Returns: whether the text has a place in metadata.
bool takeText(const png_text& text, Metadata& metadata) {
    const bool isUtf8 = text.compression >= PNG_ITXT_COMPRESSION_NONE;
    const std::size_t length = isUtf8 ? text.itxt_length : text.text_length;
    const std::string words = text.text == nullptr ? "" : std::string(text.text, length);
    // A language and a key in it have no place.
    const bool isWhole = !isUtf8 || (text.lang != nullptr && *text.lang == '\0' &&
                                     text.lang_key != nullptr && *text.lang_key == '\0');
    if (std::strcmp(text.key, kXmpKey) == 0 && metadata.xmp.empty()) {
        metadata.xmp = words;
        return isWhole;
    }
    if (std::strcmp(text.key, kDescriptionKey) == 0 && metadata.description.empty()) {
        metadata.description = isUtf8 ? words : latin1ToUtf8(words);
        return isWhole;
    }
    return false;
}

const char* chunkOf(const png_text& text) {
    if (text.compression >= PNG_ITXT_COMPRESSION_NONE) return "iTXt";
    return text.compression == PNG_TEXT_COMPRESSION_NONE ? "tEXt" : "zTXt";
}

/// Returns: how many chunks of each name have a text that is kept.
std::map<std::string, std::size_t> takeTexts(png_structp png, png_infop info, Metadata& metadata) {
    std::map<std::string, std::size_t> kept;
    png_textp texts = nullptr;
    int count = 0;
    png_get_text(png, info, &texts, &count);
    for (int i = 0; i < count; ++i)
        if (takeText(texts[i], metadata)) ++kept[chunkOf(texts[i])];
    return kept;
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

void takeResolution(png_structp png, png_infop info, Metadata& metadata) {
    png_uint_32 x = 0;
    png_uint_32 y = 0;
    int unit = 0;
    if (png_get_pHYs(png, info, &x, &y, &unit) != 0 && unit == PNG_RESOLUTION_METER)
        metadata.resolution = Resolution{x, y};
}

/// Whether metadata has what the chunks of a name say. Transparency is looked at elsewhere.
bool isKept(const std::string& name, std::size_t count, const Metadata& metadata,
            const std::map<std::string, std::size_t>& keptTexts) {
    if (name == "tRNS") return true;
    if (name == "iCCP") return !metadata.icc.empty();
    if (name == "eXIf") return !metadata.exif.empty();
    if (name == "pHYs") return metadata.resolution.has_value();
    // Not all texts that a file has are read: libpng takes a limited number.
    const auto kept = keptTexts.find(name);
    return kept != keptTexts.end() && kept->second == count;
}

void addChunk(const unsigned char* chunk, std::size_t length, const std::string& name,
              PngChunks& chunks) {
    if (name == "acTL" && length >= kFrameCountBytes)
        chunks.frames = png_get_uint_32(chunk + kChunkHeadBytes);
    const bool isAncillary = (chunk[4] & 0x20) != 0;
    if (isAncillary && (chunks.counts.size() < kMostNames || chunks.counts.contains(name)))
        ++chunks.counts[name];
}

}  // namespace

PngChunks chunksOf(ByteView file) {
    PngChunks chunks;
    std::size_t at = kSignatureBytes;
    while (at <= file.size() && file.size() - at >= kChunkExtraBytes) {
        const unsigned char* chunk = file.data() + at;
        const std::size_t length = png_get_uint_32(chunk);
        const std::string name(reinterpret_cast<const char*>(chunk) + 4, 4);
        const bool isLongerThanFile = length > file.size() - at - kChunkExtraBytes;
        // Rows that are missing are found by reading them. Of all else libpng allocates the length first.
        if (isLongerThanFile && name != "IDAT")
            throw Refusal{"is a damaged PNG: a chunk is longer than what is left of the file"};
        if (isLongerThanFile || name == "IEND") break;
        addChunk(chunk, length, name, chunks);
        at += length + kChunkExtraBytes;
    }
    return chunks;
}

void takeMetadata(png_structp png, png_infop info, const PngChunks& chunks, Metadata& metadata) {
    takeProfiles(png, info, metadata);
    takeResolution(png, info, metadata);
    const auto keptTexts = takeTexts(png, info, metadata);
    std::string names;
    std::size_t lost = 0;
    for (const auto& [name, count] : chunks.counts) {
        if (isKept(name, count, metadata, keptTexts)) continue;
        names += (names.empty() ? "" : ", ") + name;
        ++lost;
    }
    if (lost > 0)
        metadata.notKept.push_back({(lost == 1 ? "PNG chunk " : "PNG chunks ") + names, lost > 1});
}

void putMetadata(png_structp png, png_infop info, const Metadata& metadata) {
    const auto bytesOf = [](const std::string& text) {
        return reinterpret_cast<png_bytep>(const_cast<char*>(text.data()));
    };
    if (!metadata.icc.empty())
        png_set_iCCP(png, info, "ICC profile", PNG_COMPRESSION_TYPE_BASE, bytesOf(metadata.icc),
                     static_cast<png_uint_32>(metadata.icc.size()));
    if (!metadata.exif.empty())
        png_set_eXIf_1(png, info, static_cast<png_uint_32>(metadata.exif.size()),
                       bytesOf(metadata.exif));
    if (metadata.resolution)
        png_set_pHYs(png, info, metadata.resolution->pixelsPerMetreX,
                     metadata.resolution->pixelsPerMetreY, PNG_RESOLUTION_METER);
    png_text texts[2] = {};
    int count = 0;
    for (const auto& [key, words] :
         {std::pair<const char*, const std::string*>{kXmpKey, &metadata.xmp},
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
