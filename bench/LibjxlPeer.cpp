// libjxl: lossless, no helper threads, at effort 1, the fastest, at 3, and at 7, its default. It knows
// samples of 16 bits only scaled to the full range, so images of 9 to 16 bits are declared as 16-bit
// ones, which spares it the scaling.

#include <jxl/decode.h>
#include <jxl/encode.h>
#include <stdexcept>

#include "IPeer.h"

namespace bench {
namespace {

void require(bool isRight) {
    if (!isRight) throw std::runtime_error("refused");
}

void require(JxlEncoderStatus status) {
    require(status == JXL_ENC_SUCCESS);
}

using Encoder = std::unique_ptr<JxlEncoder, decltype(&JxlEncoderDestroy)>;
using Decoder = std::unique_ptr<JxlDecoder, decltype(&JxlDecoderDestroy)>;

JxlPixelFormat formatOf(const Picture& picture) {
    return {static_cast<std::uint32_t>(picture.planes()),
            picture.bytesPerSample() == 2 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_LITTLE_ENDIAN, 0};
}

void describe(JxlEncoder* encoder, const Picture& picture) {
    JxlBasicInfo info;
    JxlEncoderInitBasicInfo(&info);
    info.xsize = picture.image.width;
    info.ysize = picture.image.height;
    info.bits_per_sample = static_cast<std::uint32_t>(8 * picture.bytesPerSample());
    info.num_color_channels = static_cast<std::uint32_t>(picture.planes());
    // Without it the colours would go through a transform that loses.
    info.uses_original_profile = JXL_TRUE;
    require(JxlEncoderSetBasicInfo(encoder, &info));
    JxlColorEncoding colours;
    JxlColorEncodingSetToSRGB(&colours, picture.planes() == 1 ? JXL_TRUE : JXL_FALSE);
    require(JxlEncoderSetColorEncoding(encoder, &colours));
}

/// One round is enough for those whose speed is not what they are for.
constexpr int kLeastSlowEffort = 3;

class CLibjxl : public IPeer {
public:
    explicit CLibjxl(int wantedEffort)
        : effort(wantedEffort), label("libjxl e" + std::to_string(effort)) {}
    const char* name() const override { return label.c_str(); }
    std::string version() const override {
        const std::uint32_t number = JxlEncoderVersion();
        return std::to_string(number / 1000000) + '.' + std::to_string(number / 1000 % 1000) + '.' +
               std::to_string(number % 1000);
    }
    bool isSlow() const override { return effort >= kLeastSlowEffort; }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        const Encoder encoder(JxlEncoderCreate(nullptr), JxlEncoderDestroy);
        describe(encoder.get(), picture);
        JxlEncoderFrameSettings* settings = JxlEncoderFrameSettingsCreate(encoder.get(), nullptr);
        require(JxlEncoderFrameSettingsSetOption(settings, JXL_ENC_FRAME_SETTING_EFFORT, effort));
        require(JxlEncoderSetFrameLossless(settings, JXL_TRUE));
        const JxlPixelFormat format = formatOf(picture);
        require(JxlEncoderAddImageFrame(settings, &format, picture.pixels.data(),
                                        picture.pixels.size()));
        JxlEncoderCloseInput(encoder.get());
        std::uint8_t* next = room.data();
        std::size_t left = room.size();
        require(JxlEncoderProcessOutput(encoder.get(), &next, &left));
        return room.size() - left;
    }

    void decompress(std::span<const unsigned char> stream, const Picture& layout,
                    std::span<unsigned char> pixels) override {
        const Decoder decoder(JxlDecoderCreate(nullptr), JxlDecoderDestroy);
        require(JxlDecoderSubscribeEvents(decoder.get(), JXL_DEC_FULL_IMAGE) == JXL_DEC_SUCCESS);
        require(JxlDecoderSetInput(decoder.get(), stream.data(), stream.size()) == JXL_DEC_SUCCESS);
        JxlDecoderCloseInput(decoder.get());
        const JxlPixelFormat format = formatOf(layout);
        require(JxlDecoderProcessInput(decoder.get()) == JXL_DEC_NEED_IMAGE_OUT_BUFFER);
        require(JxlDecoderSetImageOutBuffer(decoder.get(), &format, pixels.data(), pixels.size()) ==
                JXL_DEC_SUCCESS);
        require(JxlDecoderProcessInput(decoder.get()) == JXL_DEC_FULL_IMAGE);
    }

private:
    int effort;
    std::string label;
};

}  // namespace

Peer makeLibjxl(int effort) {
    return std::make_unique<CLibjxl>(effort);
}

}  // namespace bench
