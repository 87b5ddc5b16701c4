#include "convert/PngReader.h"

#include <algorithm>
#include <vector>

#include "convert/CPngSource.h"
#include "convert/ImageChecks.h"
#include "convert/PngMetadata.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"

namespace qmx {
namespace {

/// The head of a PNG.
struct PngHead {
    png_uint_32 width = 0;
    png_uint_32 height = 0;
    int depth = 0;
    int colours = 0;
    bool hasTransparency = false;

    bool isPalette() const { return colours == PNG_COLOR_TYPE_PALETTE; }
    bool isColour() const { return (colours & PNG_COLOR_MASK_COLOR) != 0; }
    bool hasAlphaChannel() const { return (colours & PNG_COLOR_MASK_ALPHA) != 0; }
    unsigned sampleBytes() const { return depth == 16 ? 2 : 1; }
    /// Channels as they come from libpng, alpha included. Those of a palette have numbers.
    std::size_t channels() const {
        const std::size_t own = isColour() && !isPalette() ? 3 : 1;
        return own + (hasAlphaChannel() ? 1 : 0);
    }
};

PngHead headOf(CPngSource& source) {
    PngHead head;
    source.run([&] {
        png_read_info(source.png, source.info);
        png_get_IHDR(source.png, source.info, &head.width, &head.height, &head.depth, &head.colours,
                     nullptr, nullptr, nullptr);
        head.hasTransparency = png_get_valid(source.png, source.info, PNG_INFO_tRNS) != 0;
    });
    return head;
}

void requireUsable(const PngHead& head, const PngChunks& chunks, const ReadOptions& options) {
    requireSides(head.width, head.height, options);
    if (chunks.frames > 1) refusePages(chunks.frames, "save its frames one by one");
    if (head.isColour() && head.depth == 16) refuseDeepColour();
    if ((head.hasAlphaChannel() || head.hasTransparency) && !options.leavesOutOpaqueAlpha)
        refuseAlpha();
}

/// Reads all rows. Samples are never scaled: a bit becomes a byte of 0 or 1.
void readRows(CPngSource& source, const PngHead& head, ImageFile& image) {
    const std::size_t rowBytes = head.width * head.channels() * head.sampleBytes();
    image.buffer = Buffer(rowBytes * head.height);
    std::size_t row = 0;
    source.runInRows(row, head.height, [&] {
        if (head.depth < 8) png_set_packing(source.png);
        if (head.depth == 16) png_set_swap(source.png);
        const int passes = png_set_interlace_handling(source.png);
        png_read_update_info(source.png, source.info);
        if (png_get_rowbytes(source.png, source.info) != rowBytes)
            png_error(source.png, "rows of another size");
        for (int pass = 0; pass < passes; ++pass)
            for (row = 0; row < head.height; ++row)
                png_read_row(source.png, image.buffer.bytes.get() + row * rowBytes, nullptr);
    });
}

/// Returns: whether a pixel has the one colour that stands for transparent, or one of a palette that is not opaque.
bool usesTransparentColour(CPngSource& source, const PngHead& head, const ImageFile& image) {
    png_color_16p key = nullptr;
    png_bytep alphas = nullptr;
    int alphaCount = 0;
    source.run([&] { png_get_tRNS(source.png, source.info, &alphas, &alphaCount, &key); });
    const std::size_t pixelCount = std::size_t{head.width} * head.height;
    if (head.isPalette()) {
        const unsigned char* numbers = image.pixels();
        return std::any_of(numbers, numbers + pixelCount, [=](unsigned char number) {
            return number < alphaCount && alphas[number] != 0xFF;
        });
    }
    if (key == nullptr) return false;
    const unsigned colour[] = {head.isColour() ? key->red : key->gray, key->green, key->blue};
    const std::size_t channels = head.channels();
    for (std::size_t i = 0; i < image.sampleCount(); i += channels) {
        std::size_t alike = 0;
        while (alike < channels && image.sample(i + alike) == colour[alike])
            ++alike;
        if (alike == channels) return true;
    }
    return false;
}

void leaveOutAlpha(CPngSource& source, const PngHead& head, ImageFile& image) {
    constexpr unsigned char kOpaque[] = {0xFF, 0xFF};
    const bool hasChannel = head.channels() == 2 || head.channels() == 4;
    if (hasChannel) {
        removeOpaqueChannel(image.pixels(), std::size_t{head.width} * head.height,
                            head.channels() * head.sampleBytes(), {kOpaque, head.sampleBytes()});
    } else if (usesTransparentColour(source, head, image)) {
        refuseTransparency();
    }
}

/// libpng would make black of numbers that have no colour.
void replaceNumbers(CPngSource& source, ImageFile& image) {
    png_colorp colours = nullptr;
    int count = 0;
    source.run([&] { png_get_PLTE(source.png, source.info, &colours, &count); });
    std::vector<PaletteColour> palette;
    palette.reserve(static_cast<std::size_t>(count));
    for (int i = 0; i < count; ++i)
        palette.push_back({colours[i].red, colours[i].green, colours[i].blue});
    if (!expandPalette(image, palette))
        throw Refusal{"is a damaged PNG: its palette lacks a colour that pixels have"};
}

void describe(ImageFile& image, const PngHead& head) {
    if (head.isPalette()) notePalette(image);
    const unsigned bits = head.isColour()    ? 8
                          : head.depth == 16 ? 0
                                             : static_cast<unsigned>(head.depth);
    setGeometry(image, head.width, head.height, head.isColour() ? 3 : head.sampleBytes(), bits);
}

}  // namespace

ImageFile readPng(ByteView file, const ReadOptions& options) {
    CPngSource source(file);
    const PngChunks chunks = chunksOf(file);
    const PngHead head = headOf(source);
    requireUsable(head, chunks, options);
    ImageFile image;
    describe(image, head);
    readRows(source, head, image);
    source.run([&] { png_read_end(source.png, source.info); });
    if (head.hasAlphaChannel() || head.hasTransparency) leaveOutAlpha(source, head, image);
    if (head.isPalette()) replaceNumbers(source, image);
    takeMetadata(source.png, source.info, chunks, image.metadata);
    if (source.bytesLeft() != 0) image.metadata.notKept.push_back(bytesBehind(source.bytesLeft()));
    for (std::size_t i = 0; i < source.words.warningCount; ++i)
        image.notes.push_back("libpng: " + std::string(source.words.warnings[i].data()));
    return image;
}

}  // namespace qmx
