#include "convert/TiffReader.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "convert/ImageChecks.h"
#include "convert/Refusal.h"
#include "convert/Samples.h"
#include "convert/TiffLayout.h"

namespace qmx {
namespace {

/// Tiles may reach beyond a small image; beyond this they are a trap.
constexpr std::uint64_t kMostTileBytes = 64 << 20;

/// Puts pixels of one row, as they stand in the file, to their place. channel: of which they are, where each
/// channel stands apart.
void place(const TiffLayout& layout, const unsigned char* packed, std::size_t row,
           std::size_t column, std::size_t pixelCount, std::size_t channel, ImageFile& image) {
    const std::size_t pixelBytes = std::size_t{layout.channels} * layout.sampleBytes();
    unsigned char* to = image.buffer.bytes.get() + row * layout.rowBytes() + column * pixelBytes;
    if (layout.bits < 8) {
        unpackSamples(packed, layout.bits, to, pixelCount);
    } else if (!layout.isApart) {
        std::memcpy(to, packed, pixelCount * pixelBytes);
    } else {
        const std::size_t sampleBytes = layout.sampleBytes();
        for (std::size_t i = 0; i < pixelCount; ++i)
            std::memcpy(to + i * pixelBytes + channel * sampleBytes, packed + i * sampleBytes,
                        sampleBytes);
    }
}

[[noreturn]] void refuseInRow(CTiffFile& file, std::uint32_t row, const TiffLayout& layout) {
    if (file.endedEarly()) refuseShortFile(row + 1, layout.height);
    throw Refusal{"is a damaged TIFF: " + file.words() + ", in row " + std::to_string(row + 1) +
                  " of " + std::to_string(layout.height)};
}

void readStrips(CTiffFile& file, const TiffLayout& layout, ImageFile& image) {
    const auto lineBytes = static_cast<std::uint64_t>(TIFFScanlineSize64(file.get()));
    const std::uint64_t expected =
        (std::uint64_t{layout.width} * (layout.isApart ? 1 : layout.channels) * layout.bits + 7) /
        8;
    if (lineBytes != expected) file.refuse();
    Buffer line(lineBytes);
    const unsigned planes = layout.isApart ? layout.channels : 1;
    for (unsigned plane = 0; plane < planes; ++plane)
        for (std::uint32_t row = 0; row < layout.height; ++row) {
            const int result = TIFFReadScanline(file.get(), line.bytes.get(), row,
                                                static_cast<std::uint16_t>(plane));
            if (result != 1) refuseInRow(file, row, layout);
            place(layout, line.bytes.get(), row, 0, layout.width, plane, image);
        }
}

/// The tiles of a TIFF.
struct TileShape {
    std::uint32_t width;
    std::uint32_t height;
    std::uint64_t rowBytes;
    std::uint64_t sizeBytes;
};

TileShape requireTiles(CTiffFile& file, const TiffLayout& layout) {
    const TileShape tiles{file.number<std::uint32_t>(TIFFTAG_TILEWIDTH, 0),
                          file.number<std::uint32_t>(TIFFTAG_TILELENGTH, 0),
                          TIFFTileRowSize64(file.get()), TIFFTileSize64(file.get())};
    const std::uint64_t mostBytes = kMostTileBytes + 2 * layout.rowBytes() * layout.height;
    const std::uint64_t pixelBits =
        std::uint64_t{layout.bits} * (layout.isApart ? 1 : layout.channels);
    const bool isWhole = tiles.width % 8 == 0 && tiles.rowBytes == tiles.width * pixelBits / 8 &&
                         tiles.sizeBytes == tiles.rowBytes * tiles.height;
    if (tiles.width == 0 || tiles.height == 0 || !isWhole || tiles.sizeBytes > mostBytes)
        throw Refusal{"is a damaged TIFF: its tiles are impossible"};
    return tiles;
}

void readTile(CTiffFile& file, const TiffLayout& layout, const TileShape& tiles, std::uint32_t row,
              std::uint32_t column, unsigned plane, Buffer& tile, ImageFile& image) {
    const tmsize_t count = TIFFReadTile(file.get(), tile.bytes.get(), column, row, 0,
                                        static_cast<std::uint16_t>(plane));
    if (count != static_cast<tmsize_t>(tiles.sizeBytes)) refuseInRow(file, row, layout);
    const std::uint32_t rows = std::min(tiles.height, layout.height - row);
    const std::uint32_t columns = std::min(tiles.width, layout.width - column);
    for (std::uint32_t r = 0; r < rows; ++r)
        place(layout, tile.bytes.get() + r * tiles.rowBytes, row + r, column, columns, plane,
              image);
}

void readTiles(CTiffFile& file, const TiffLayout& layout, ImageFile& image) {
    const TileShape tiles = requireTiles(file, layout);
    Buffer tile(tiles.sizeBytes);
    const unsigned planes = layout.isApart ? layout.channels : 1;
    for (unsigned plane = 0; plane < planes; ++plane)
        for (std::uint64_t row = 0; row < layout.height; row += tiles.height)
            for (std::uint64_t column = 0; column < layout.width; column += tiles.width)
                readTile(file, layout, tiles, static_cast<std::uint32_t>(row),
                         static_cast<std::uint32_t>(column), plane, tile, image);
}

/// Returns: the colours of a palette. Those of a TIFF have 16 bits: 8 of them twice, or followed by zeros.
std::vector<PaletteColour> paletteOf(CTiffFile& file, const TiffLayout& layout) {
    std::uint16_t* channels[3] = {};
    if (TIFFGetField(file.get(), TIFFTAG_COLORMAP, &channels[0], &channels[1], &channels[2]) != 1)
        throw Refusal{"is a damaged TIFF: it has no palette"};
    const auto byteOf = [](std::uint16_t value) {
        if ((value & 0xFF) != 0 && (value & 0xFF) != value >> 8)
            throw Refusal{"has a palette of 16-bit colours; a stream holds 8-bit RGB"};
        return static_cast<unsigned char>(value >> 8);
    };
    std::vector<PaletteColour> palette;
    for (std::size_t i = 0; i < std::size_t{1} << layout.bits; ++i)
        palette.push_back({byteOf(channels[0][i]), byteOf(channels[1][i]), byteOf(channels[2][i])});
    return palette;
}

void leaveOutAlpha(const TiffLayout& layout, ImageFile& image) {
    constexpr unsigned char kOpaque[] = {0xFF, 0xFF};
    removeOpaqueChannel(image.pixels(), std::size_t{layout.width} * layout.height,
                        std::size_t{layout.channels} * layout.sampleBytes(),
                        {kOpaque, layout.sampleBytes()});
}

}  // namespace

ImageFile readTiff(ByteView bytes, const ReadOptions& options) {
    CTiffFile file(bytes);
    ImageFile image;
    const TiffLayout layout = requireLayout(file, options, image);
    if (layout.isPalette && layout.bits == 16) refuseColours("a palette of 65536 colours");
    takeMetadata(file, image.metadata);
    file.requireSound();
    const bool isColour = layout.isColour || layout.isPalette;
    const unsigned bits = isColour ? 8 : layout.bits == 16 ? 0 : layout.bits;
    setGeometry(image, layout.width, layout.height, isColour ? 3 : layout.sampleBytes(), bits);
    image.buffer = Buffer(layout.rowBytes() * layout.height);
    file.beginSamples();
    if (TIFFIsTiled(file.get()) != 0) {
        readTiles(file, layout, image);
    } else {
        readStrips(file, layout, image);
    }
    file.requireSound();
    if (layout.hasAlpha) leaveOutAlpha(layout, image);
    // There is a colour for every number that its bits can make.
    if (layout.isPalette) expandPalette(image, paletteOf(file, layout));
    for (const std::string& warning : file.warnings())
        image.notes.push_back("libtiff: " + warning);
    return image;
}

}  // namespace qmx
