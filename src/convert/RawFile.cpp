#include "convert/RawFile.h"

#include <charconv>
#include <string_view>

#include "convert/ImageChecks.h"
#include "convert/LostPart.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

/// Takes a number from the front of text. Returns: nothing where there is none.
template <class Number>
std::optional<Number> takeNumber(std::string_view& text) {
    Number value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc()) return std::nullopt;
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

bool takeCharacter(std::string_view& text, char wanted) {
    if (!text.starts_with(wanted)) return false;
    text.remove_prefix(1);
    return true;
}

/// Returns: whether the name is one of a type.
bool setType(std::string_view name, RawLayout& layout) {
    layout.bytesPerPixel = 2;
    if (name == kBigEndianRaw || name == kSignedRaw) {
        layout.otherType = name;
        return true;
    }
    if (name == "gray16") return true;
    if (name == "gray8" || name == "rgb8") {
        layout.bytesPerPixel = name == "rgb8" ? 3 : 1;
        layout.bits = 8;
        return true;
    }
    if (!name.starts_with("gray")) return false;
    name.remove_prefix(4);
    const auto bits = takeNumber<unsigned>(name);
    if (!bits || !name.empty() || *bits < 9 || *bits > 15) return false;
    layout.bits = *bits;
    return true;
}

}  // namespace

std::optional<RawLayout> parseRawLayout(const std::string& argument) {
    std::string_view text = argument;
    RawLayout layout;
    const auto width = takeNumber<std::uint32_t>(text);
    if (!width || !takeCharacter(text, 'x')) return std::nullopt;
    const auto height = takeNumber<std::uint32_t>(text);
    if (!height || !takeCharacter(text, ':')) return std::nullopt;
    layout.width = *width;
    layout.height = *height;
    const std::string_view name = text.substr(0, text.find('+'));
    if (!setType(name, layout)) return std::nullopt;
    text.remove_prefix(name.size());
    if (text.empty()) return layout;
    takeCharacter(text, '+');
    const auto skip = takeNumber<std::uint64_t>(text);
    if (!skip || !text.empty()) return std::nullopt;
    layout.skipBytes = *skip;
    return layout;
}

void requireRawBytes(std::uint64_t fileBytes, const RawLayout& layout, const ReadOptions& options) {
    requireSides(layout.width, layout.height, options);
    const std::uint64_t samplesBytes =
        std::uint64_t{layout.width} * layout.height * layout.bytesPerPixel;
    const std::uint64_t expected = layout.skipBytes + samplesBytes;
    if (expected < layout.skipBytes || fileBytes != expected)
        throw Refusal{"has " + bytesInWords(fileBytes) + "; " + std::to_string(samplesBytes) +
                      " of samples behind " + std::to_string(layout.skipBytes) +
                      " were announced by --raw"};
}

ImageFile readRaw(Buffer file, const RawLayout& layout, const ReadOptions& options) {
    requireRawBytes(file.sizeBytes, layout, options);
    ImageFile image;
    setGeometry(image, layout.width, layout.height, layout.bytesPerPixel, layout.bits);
    image.buffer = std::move(file);
    image.pixelsAtByte = layout.skipBytes;
    if (layout.skipBytes == 1) image.metadata.notKept.push_back({"the first byte", false});
    if (layout.skipBytes > 1)
        image.metadata.notKept.push_back(
            {"the first " + std::to_string(layout.skipBytes) + " bytes"});
    image.metadata.rawType = layout.otherType;
    turnRawSamples(image, layout.otherType);
    return image;
}

void turnRawSamples(ImageFile& image, const std::string& type) {
    const std::size_t sampleCount = image.rawBytes() / 2;
    if (type == kBigEndianRaw) swapSampleBytes(image.pixels(), sampleCount);
    if (type == kSignedRaw) flipSampleSigns(image.pixels(), sampleCount);
}

}  // namespace qmx
