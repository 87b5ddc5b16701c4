// CharLS: JPEG-LS without loss; colours interleaved by line, through its reversible transform HP1.

#include <charls/charls.h>

#include "IPeer.h"

namespace bench {
namespace {

class CCharls : public IPeer {
public:
    const char* name() const override { return "CharLS"; }
    std::string version() const override { return charls_get_version_string(); }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        charls::jpegls_encoder encoder;
        encoder.frame_info({picture.image.width, picture.image.height,
                            static_cast<std::int32_t>(picture.image.bits_per_pixel),
                            static_cast<std::int32_t>(picture.planes())});
        if (picture.planes() == 3)
            encoder.interleave_mode(charls::interleave_mode::line)
                .color_transformation(charls::color_transformation::hp1);
        encoder.destination(room.data(), room.size());
        return encoder.encode(picture.pixels);
    }

    void decompress(std::span<const unsigned char> stream, const Picture&,
                    std::span<unsigned char> pixels) override {
        const charls::jpegls_decoder decoder(stream.data(), stream.size(), true);
        decoder.decode(pixels.data(), pixels.size());
    }
};

}  // namespace

Peer makeCharls() {
    return std::make_unique<CCharls>();
}

}  // namespace bench
