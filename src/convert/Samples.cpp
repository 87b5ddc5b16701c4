#include "convert/Samples.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include "convert/Refusal.h"

namespace qmx {

void swapSampleBytes(unsigned char* samples, std::size_t sampleCount) {
    for (std::size_t i = 0; i < sampleCount; ++i)
        std::swap(samples[2 * i], samples[2 * i + 1]);
}

void flipSampleSigns(unsigned char* samples, std::size_t sampleCount) {
    for (std::size_t i = 0; i < sampleCount; ++i)
        samples[2 * i + 1] ^= 0x80;
}

void unpackSamples(const unsigned char* packed, unsigned bits, unsigned char* samples,
                   std::size_t sampleCount) {
    const std::size_t perByte = 8 / bits;
    const unsigned mask = (1U << bits) - 1;
    for (std::size_t i = 0; i < sampleCount; ++i) {
        const unsigned shift = 8 - bits * static_cast<unsigned>(i % perByte + 1);
        samples[i] = static_cast<unsigned char>((packed[i / perByte] >> shift) & mask);
    }
}

void packSamples(const unsigned char* samples, unsigned bits, unsigned char* packed,
                 std::size_t sampleCount) {
    const std::size_t perByte = 8 / bits;
    std::fill_n(packed, (sampleCount + perByte - 1) / perByte, static_cast<unsigned char>(0));
    for (std::size_t i = 0; i < sampleCount; ++i) {
        const unsigned shift = 8 - bits * static_cast<unsigned>(i % perByte + 1);
        packed[i / perByte] =
            static_cast<unsigned char>(packed[i / perByte] | (unsigned{samples[i]} << shift));
    }
}

bool expandPalette(ImageFile& image, std::span<const PaletteColour> palette) {
    const std::size_t pixelCount = std::size_t{image.geometry.width} * image.geometry.height;
    Buffer expanded(3 * pixelCount);
    for (std::size_t i = 0; i < pixelCount; ++i) {
        const std::size_t number = image.buffer.bytes[i];
        if (number >= palette.size()) return false;
        expanded.bytes[3 * i] = palette[number].red;
        expanded.bytes[3 * i + 1] = palette[number].green;
        expanded.bytes[3 * i + 2] = palette[number].blue;
    }
    image.buffer = std::move(expanded);
    return true;
}

void removeOpaqueChannel(unsigned char* pixels, std::size_t pixelCount, std::size_t pixelBytes,
                         ByteView opaque) {
    const std::size_t keptBytes = pixelBytes - opaque.size();
    for (std::size_t i = 0; i < pixelCount; ++i) {
        const unsigned char* pixel = pixels + i * pixelBytes;
        if (!std::equal(opaque.begin(), opaque.end(), pixel + keptBytes)) refuseTransparency();
        std::memmove(pixels + i * keptBytes, pixel, keptBytes);
    }
}

void refuseTransparency() {
    throw Refusal{"has an alpha channel that is not opaque everywhere, which a stream cannot hold"};
}

}  // namespace qmx
