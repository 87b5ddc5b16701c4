#include "convert/NpyReader.h"

#include <cstring>

#include "convert/ImageChecks.h"
#include "convert/NpyHead.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

std::string sidesOfRaw(const NpyHead& head) {
    return std::to_string(head.shape[1]) + "x" + std::to_string(head.shape[0]);
}

/// Signed samples of 16 bits have a way that keeps them.
[[noreturn]] void refuseSigned(const NpyHead& head) {
    if (head.type == "<i2" && head.shape.size() == 2 && !head.isFortranOrder)
        refuseSamples("signed samples", "--raw " + sidesOfRaw(head) + ":int16+" +
                                            std::to_string(head.startByte) + " keeps their sign");
    refuseSamples("signed samples", "convert it to uint8 or uint16 first");
}

/// Returns: bytes of a sample.
unsigned requireType(const NpyHead& head) {
    const std::string& type = head.type;
    if (type == "|u1" || type == "<u1" || type == ">u1") return 1;
    if (type == "<u2" || type == ">u2") return 2;
    const char kind = type.size() < 2 ? '?' : type[1];
    if (kind == 'i') refuseSigned(head);
    if (kind == 'f') refuseSamples("floating-point samples", "convert it to uint8 or uint16 first");
    if (kind == 'c') refuseSamples("complex samples", "save real and imaginary part one by one");
    if (kind == 'u') refuseSamples("samples of more than 16 bits", "convert it to uint16 first");
    refuseSamples("samples that are no numbers", "convert it to uint8 or uint16 first");
}

void requireShape(const NpyHead& head, unsigned sampleBytes) {
    const auto& shape = head.shape;
    if (shape.size() < 2) throw Refusal{"is an array of fewer than two dimensions"};
    if (shape.size() == 2) return;
    if (shape.size() > 3 || shape[2] > 4) {
        std::uint64_t pages = 1;
        for (std::size_t i = 0; i + 2 < shape.size(); ++i)
            if (__builtin_mul_overflow(pages, shape[i], &pages)) pages = 0;
        refusePages(pages, "save its planes one by one");
    }
    // Nothing says whether the last of them is alpha.
    if (shape[2] == 4 || shape[2] == 2)
        refuseColours("an array of " + std::to_string(shape[2]) + " channels");
    if (shape[2] == 3 && sampleBytes == 2) refuseDeepColour();
    if (shape[2] != 3) refusePages(shape[0], "save its planes one by one");
}

/// In Fortran order the first index runs fastest.
void transpose(ImageFile& image, unsigned sampleBytes) {
    const std::size_t width = image.geometry.width;
    const std::size_t height = image.geometry.height;
    const std::size_t channels = image.isColour() ? 3 : 1;
    Buffer rows(image.rawBytes());
    unsigned char* to = rows.bytes.get();
    for (std::size_t r = 0; r < height; ++r)
        for (std::size_t c = 0; c < width; ++c)
            for (std::size_t channel = 0; channel < channels; ++channel) {
                const std::size_t from = (channel * width + c) * height + r;
                std::memcpy(to, image.pixels() + from * sampleBytes, sampleBytes);
                to += sampleBytes;
            }
    image.buffer = std::move(rows);
    image.pixelsAtByte = 0;
}

/// Leaves out sides of 1 in front of and behind a picture. Returns: whether there were any.
bool dropSidesOfOne(NpyHead& head) {
    auto& shape = head.shape;
    const std::size_t before = shape.size();
    while (shape.size() > 2 && shape.front() == 1)
        shape.erase(shape.begin());
    while (shape.size() > 2 && shape.back() == 1)
        shape.pop_back();
    return shape.size() != before;
}

}  // namespace

ImageFile readNpy(Buffer file, const ReadOptions& options) {
    NpyHead head = readNpyHead(file.view());
    const bool hadMoreSides = dropSidesOfOne(head);
    const unsigned sampleBytes = requireType(head);
    requireShape(head, sampleBytes);
    requireSides(head.shape[1], head.shape[0], options);
    ImageFile image;
    const unsigned pixelBytes = head.shape.size() == 3 ? 3 : sampleBytes;
    setGeometry(image, head.shape[1], head.shape[0], pixelBytes, sampleBytes == 1 ? 8 : 0);
    const std::size_t presentBytes = file.sizeBytes - head.startByte;
    if (presentBytes < image.rawBytes())
        refuseShortPixels(presentBytes, image.rowBytes(), image.geometry.height);
    if (presentBytes > image.rawBytes())
        image.metadata.notKept.push_back(bytesBehind(presentBytes - image.rawBytes()));
    image.buffer = std::move(file);
    image.pixelsAtByte = head.startByte;
    if (hadMoreSides) image.metadata.notKept.push_back({"sides of 1 of the array"});
    if (head.type == ">u2") swapSampleBytes(image.pixels(), image.rawBytes() / 2);
    if (head.isFortranOrder) transpose(image, sampleBytes);
    return image;
}

}  // namespace qmx
