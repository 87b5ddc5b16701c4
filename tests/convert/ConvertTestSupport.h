#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include "convert/IByteSink.h"
#include "convert/ImageFile.h"
#include "convert/Refusal.h"

namespace test {

using Bytes = std::vector<unsigned char>;

inline qmx::Buffer bufferOf(std::string_view bytes) {
    qmx::Buffer buffer(bytes.size());
    std::copy(bytes.begin(), bytes.end(), buffer.bytes.get());
    return buffer;
}

inline qmx::ByteView viewOf(std::string_view bytes) {
    return {reinterpret_cast<const unsigned char*>(bytes.data()), bytes.size()};
}

/// Returns: the words of the refusal that work ends with, none if it comes to its end.
template <class Work>
std::string refusalOf(Work work) {
    try {
        work();
    } catch (const qmx::Refusal& refusal) {
        return refusal.words;
    }
    return "";
}

/// Keeps what is written.
class CTextSink final : public qmx::IByteSink {
public:
    using IByteSink::write;
    void write(qmx::ByteView bytes) override { text.append(bytes.begin(), bytes.end()); }

    std::string text;
};

inline Bytes samplesOf(const qmx::ImageFile& image) {
    return {image.pixels(), image.pixels() + image.rawBytes()};
}

/// Makes an image of the given pixels, or of ones that differ.
inline qmx::ImageFile makeImage(std::uint32_t width, std::uint32_t height,
                                std::uint32_t bytesPerPixel, std::uint32_t bits,
                                const Bytes& pixels = {}) {
    qmx::ImageFile image;
    image.geometry.width = width;
    image.geometry.height = height;
    image.geometry.bytes_per_pixel = bytesPerPixel;
    image.geometry.bits_per_pixel = bits;
    image.buffer = qmx::Buffer(image.rawBytes());
    const unsigned most = (1U << std::min(bits, 8U)) - 1;
    for (std::size_t i = 0; i < image.rawBytes(); ++i) {
        // The upper byte of a sample has what is left of its bits.
        const bool isUpper = bytesPerPixel == 2 && i % 2 == 1;
        const unsigned mask = isUpper ? (1U << (bits - 8)) - 1 : most;
        image.pixels()[i] =
            pixels.empty() ? static_cast<unsigned char>((37 * i + 11) & mask) : pixels[i];
    }
    return image;
}

}  // namespace test
