// libwebp: lossless, at its default effort. It knows colours of 8 bits alone, so gray becomes red, green and
// blue within the measured time, as 32-bit planes do for others.

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <webp/decode.h>
#include <webp/encode.h>

#include "IPeer.h"

namespace bench {
namespace {

void require(bool isRight) {
    if (!isRight) throw std::runtime_error("refused");
}

struct WebpFree {
    void operator()(std::uint8_t* bytes) const { WebPFree(bytes); }
};
using WebpBytes = std::unique_ptr<std::uint8_t, WebpFree>;

/// Returns: the picture in colours; its own pixels, or colours that are filled.
const unsigned char* coloursOf(const Picture& picture, Bytes& colours) {
    if (picture.planes() == 3) return picture.pixels.data();
    colours.resize(3 * picture.pixels.size());
    unsigned char* colour = colours.data();
    for (const unsigned char gray : picture.pixels) {
        std::memset(colour, gray, 3);
        colour += 3;
    }
    return colours.data();
}

class CWebp : public IPeer {
public:
    const char* name() const override { return "WebP"; }
    std::string version() const override {
        const int number = WebPGetEncoderVersion();
        return std::to_string(number >> 16) + '.' + std::to_string(number >> 8 & 255) + '.' +
               std::to_string(number & 255);
    }
    bool isSlow() const override { return true; }
    const char* refusalOf(const Picture& picture) const override {
        if (picture.bytesPerSample() != 1) return "has 8 bits at most";
        const std::uint32_t side = std::max(picture.image.width, picture.image.height);
        return side > WEBP_MAX_DIMENSION ? "is too large for it" : nullptr;
    }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        Bytes colours;
        std::uint8_t* made = nullptr;
        const std::size_t sizeBytes = WebPEncodeLosslessRGB(
            coloursOf(picture, colours), static_cast<int>(picture.image.width),
            static_cast<int>(picture.image.height), static_cast<int>(3 * picture.image.width),
            &made);
        const WebpBytes stream(made);
        require(sizeBytes > 0 && sizeBytes <= room.size());
        std::memcpy(room.data(), stream.get(), sizeBytes);
        return sizeBytes;
    }

    void decompress(std::span<const unsigned char> stream, const Picture& layout,
                    std::span<unsigned char> pixels) override {
        const int stride = static_cast<int>(3 * layout.image.width);
        if (layout.planes() == 3) {
            require(WebPDecodeRGBInto(stream.data(), stream.size(), pixels.data(), pixels.size(),
                                      stride) != nullptr);
            return;
        }
        Bytes colours(3 * pixels.size());
        require(WebPDecodeRGBInto(stream.data(), stream.size(), colours.data(), colours.size(),
                                  stride) != nullptr);
        for (std::size_t i = 0; i < pixels.size(); ++i)
            pixels[i] = colours[3 * i];
    }
};

}  // namespace

Peer makeWebp() {
    return std::make_unique<CWebp>();
}

}  // namespace bench
