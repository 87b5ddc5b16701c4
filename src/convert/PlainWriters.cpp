#include "convert/PlainWriters.h"

#include <algorithm>

#include "convert/RawFile.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

/// NumPy aligns its samples so.
constexpr std::size_t kNpyAlignmentBytes = 64;
/// Magic, version, length of the text.
constexpr std::size_t kNpyFixedBytes = 10;

/// Whether a maximum value can be declared: a trailer may name one that its image does not keep to.
bool isPossible(const ImageFile& image, std::uint32_t maxValue) {
    const bool hasWords = image.geometry.bytes_per_pixel == 2;
    if (maxValue == 0 || hasWords != (maxValue > 255)) return false;
    for (std::size_t i = 0; i < image.sampleCount(); ++i)
        if (image.sample(i) > maxValue) return false;
    return true;
}

/// Returns: the maximum value to declare. Samples of two bytes need one above 255.
std::uint32_t maxValueOf(const ImageFile& image) {
    if (isPossible(image, image.metadata.maxValue)) return image.metadata.maxValue;
    if (image.geometry.bytes_per_pixel != 2) return (1U << image.geometry.bits_per_pixel) - 1;
    return (1U << std::max(image.geometry.bits_per_pixel, 9U)) - 1;
}

void writePixels(const ImageFile& image, IByteSink& sink) {
    sink.write(ByteView(image.pixels(), image.rawBytes()));
}

/// PNM and PAM are big-endian.
void writeBigEndian(ImageFile& image, IByteSink& sink) {
    if (image.geometry.bytes_per_pixel == 2) swapSampleBytes(image.pixels(), image.rawBytes() / 2);
    writePixels(image, sink);
}

std::string number(std::uint64_t value) {
    return std::to_string(value);
}

}  // namespace

void writePnm(ImageFile& image, IByteSink& sink) {
    sink.write((image.isColour() ? "P6\n" : "P5\n") + number(image.geometry.width) + " " +
               number(image.geometry.height) + "\n" + number(maxValueOf(image)) + "\n");
    writeBigEndian(image, sink);
}

void writePbm(const ImageFile& image, IByteSink& sink) {
    sink.write("P4\n" + number(image.geometry.width) + " " + number(image.geometry.height) + "\n");
    const std::size_t width = image.geometry.width;
    Buffer black(width);
    Buffer packed((width + 7) / 8);
    for (std::size_t r = 0; r < image.geometry.height; ++r) {
        std::transform(image.pixels() + r * width, image.pixels() + (r + 1) * width,
                       black.bytes.get(),
                       [](unsigned char white) { return static_cast<unsigned char>(white ^ 1); });
        packSamples(black.bytes.get(), 1, packed.bytes.get(), width);
        sink.write(packed.view());
    }
}

void writePam(ImageFile& image, IByteSink& sink) {
    sink.write("P7\nWIDTH " + number(image.geometry.width) + "\nHEIGHT " +
               number(image.geometry.height) + "\nDEPTH " + (image.isColour() ? "3" : "1") +
               "\nMAXVAL " + number(maxValueOf(image)) + "\nTUPLTYPE " +
               (image.isColour() ? "RGB" : "GRAYSCALE") + "\nENDHDR\n");
    writeBigEndian(image, sink);
}

void writeNpy(ImageFile& image, IByteSink& sink) {
    const bool isSigned = image.metadata.rawType == kSignedRaw;
    const char* type = isSigned ? "<i2" : image.geometry.bytes_per_pixel == 2 ? "<u2" : "|u1";
    std::string text = "{'descr': '" + std::string(type) + "', 'fortran_order': False, 'shape': (" +
                       number(image.geometry.height) + ", " + number(image.geometry.width) +
                       (image.isColour() ? ", 3), }" : "), }");
    const std::size_t unaligned = (kNpyFixedBytes + text.size() + 1) % kNpyAlignmentBytes;
    text.append(unaligned == 0 ? 0 : kNpyAlignmentBytes - unaligned, ' ');
    text += '\n';
    const char head[] = {'\x93',
                         'N',
                         'U',
                         'M',
                         'P',
                         'Y',
                         1,
                         0,
                         static_cast<char>(text.size() % 256),
                         static_cast<char>(text.size() / 256)};
    sink.write(std::string_view(head, sizeof head));
    sink.write(text);
    if (isSigned) turnRawSamples(image, kSignedRaw);
    writePixels(image, sink);
}

void writeRaw(ImageFile& image, IByteSink& sink) {
    turnRawSamples(image, image.metadata.rawType);
    writePixels(image, sink);
}

}  // namespace qmx
