#include "convert/TrailerBoxes.h"

#include <stdexcept>

#include "bitstream/WordBytes.h"
#include "convert/RawFile.h"
#include "convert/Refusal.h"
#include "trailer/CTrailerWriter.h"

namespace qmx {
namespace {

constexpr std::size_t kNumberBytes = 4;

/// A box whose data is text or bytes of somebody else's format.
struct TextBox {
    const char* name;
    std::string Metadata::*text;
};

constexpr TextBox kTextBoxes[] = {{"icc ", &Metadata::icc},
                                  {"exif", &Metadata::exif},
                                  {"xmp ", &Metadata::xmp},
                                  {"desc", &Metadata::description},
                                  {"raw ", &Metadata::rawType}};
constexpr char kResolutionBox[] = "res ";
constexpr char kMaxValueBox[] = "max ";

ByteView bytesOf(const std::string& text) {
    return {reinterpret_cast<const unsigned char*>(text.data()), text.size()};
}

void addNumbers(CTrailerWriter& writer, const char* name,
                std::initializer_list<std::uint32_t> numbers) {
    unsigned char bytes[2 * kNumberBytes];
    unsigned char* next = bytes;
    for (const std::uint32_t number : numbers) {
        storeNumber(next, number);
        next += kNumberBytes;
    }
    writer.add(name, ByteView(bytes, next));
}

void addBoxes(CTrailerWriter& writer, const Metadata& metadata) {
    for (const TextBox& box : kTextBoxes) {
        const std::string& text = metadata.*box.text;
        if (!text.empty()) writer.add(box.name, bytesOf(text));
    }
    if (metadata.resolution)
        addNumbers(writer, kResolutionBox,
                   {metadata.resolution->pixelsPerMetreX, metadata.resolution->pixelsPerMetreY});
    if (metadata.maxValue != 0) addNumbers(writer, kMaxValueBox, {metadata.maxValue});
}

/// Returns: whether a box is known and makes sense.
bool takeBox(const std::string& name, ByteView data, Metadata& metadata) {
    for (const TextBox& box : kTextBoxes) {
        if (name != box.name) continue;
        (metadata.*box.text).assign(reinterpret_cast<const char*>(data.data()), data.size());
        return true;
    }
    if (name == kResolutionBox && data.size() == 2 * kNumberBytes) {
        metadata.resolution =
            Resolution{loadNumber(data.data()), loadNumber(data.data() + kNumberBytes)};
        return true;
    }
    if (name == kMaxValueBox && data.size() == kNumberBytes) {
        const std::uint32_t value = loadNumber(data.data());
        const bool isPossible = value >= 1 && value <= 65535;
        if (isPossible) metadata.maxValue = value;
        return isPossible;
    }
    return false;
}

}  // namespace

std::vector<unsigned char> trailerOf(const Metadata& metadata, ByteView stream) try {
    CTrailerWriter writer;
    addBoxes(writer, metadata);
    return writer.finish(stream);
} catch (const std::length_error&) {
    throw Refusal{"has more metadata than a trailer can hold: --bare leaves it out"};
}

Metadata metadataOf(ByteView file, const Trailer& trailer) {
    Metadata metadata;
    for (const TrailerBox& box : trailer.boxes)
        if (!takeBox(box.name, file.subspan(static_cast<std::size_t>(box.offset), box.sizeBytes),
                     metadata))
            metadata.notKept.push_back({"the box '" + box.name + "'", false});
    return metadata;
}

}  // namespace qmx
