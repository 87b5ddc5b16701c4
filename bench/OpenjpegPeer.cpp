// OpenJPEG: reversible 5/3, six resolutions, one layer, reversible colour transform, one thread.

#include <algorithm>
#include <cstring>
#include <openjpeg.h>
#include <stdexcept>

#include "IPeer.h"
#include "PeerRows.h"

namespace bench {
namespace {

void require(bool isRight) {
    if (!isRight) throw std::runtime_error("refused");
}

// The handles of the library are one type in C, so each carries its own way out.
using Stream = std::unique_ptr<opj_stream_t, decltype(&opj_stream_destroy)>;
using Coder = std::unique_ptr<opj_codec_t, decltype(&opj_destroy_codec)>;
using Image = std::unique_ptr<opj_image_t, decltype(&opj_image_destroy)>;

/// A stream in the caller's memory.
struct Memory {
    unsigned char* bytes;
    std::size_t sizeBytes;
    std::size_t place = 0;
    std::size_t end = 0;
};

OPJ_SIZE_T readMemory(void* to, OPJ_SIZE_T sizeBytes, void* user) {
    auto& memory = *static_cast<Memory*>(user);
    const std::size_t count = std::min(sizeBytes, memory.sizeBytes - memory.place);
    if (count == 0) return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(to, memory.bytes + memory.place, count);
    memory.place += count;
    return count;
}

OPJ_SIZE_T writeMemory(void* from, OPJ_SIZE_T sizeBytes, void* user) {
    auto& memory = *static_cast<Memory*>(user);
    if (sizeBytes > memory.sizeBytes - memory.place) return static_cast<OPJ_SIZE_T>(-1);
    std::memcpy(memory.bytes + memory.place, from, sizeBytes);
    memory.place += sizeBytes;
    memory.end = std::max(memory.end, memory.place);
    return sizeBytes;
}

OPJ_BOOL seekMemory(OPJ_OFF_T place, void* user) {
    auto& memory = *static_cast<Memory*>(user);
    if (place < 0 || static_cast<std::size_t>(place) > memory.sizeBytes) return OPJ_FALSE;
    memory.place = static_cast<std::size_t>(place);
    return OPJ_TRUE;
}

OPJ_OFF_T skipMemory(OPJ_OFF_T count, void* user) {
    const auto place = static_cast<OPJ_OFF_T>(static_cast<Memory*>(user)->place);
    return seekMemory(place + count, user) == OPJ_TRUE ? count : -1;
}

Stream openMemory(Memory& memory, bool isInput) {
    Stream stream(opj_stream_create(std::size_t{1} << 20, isInput ? OPJ_TRUE : OPJ_FALSE),
                  opj_stream_destroy);
    opj_stream_set_user_data(stream.get(), &memory, nullptr);
    opj_stream_set_user_data_length(stream.get(), memory.sizeBytes);
    opj_stream_set_read_function(stream.get(), readMemory);
    opj_stream_set_write_function(stream.get(), writeMemory);
    opj_stream_set_seek_function(stream.get(), seekMemory);
    opj_stream_set_skip_function(stream.get(), skipMemory);
    return stream;
}

Image planesOf(const Picture& picture) {
    opj_image_cmptparm_t planes[3] = {};
    for (opj_image_cmptparm_t& plane : planes) {
        plane.dx = plane.dy = 1;
        plane.w = picture.image.width;
        plane.h = picture.image.height;
        plane.prec = picture.image.bits_per_pixel;
    }
    Image image(opj_image_create(static_cast<OPJ_UINT32>(picture.planes()), planes,
                                 picture.planes() == 3 ? OPJ_CLRSPC_SRGB : OPJ_CLRSPC_GRAY),
                opj_image_destroy);
    require(image != nullptr);
    image->x1 = picture.image.width;
    image->y1 = picture.image.height;
    for (std::size_t r = 0; r < picture.image.height; ++r)
        for (std::size_t p = 0; p < picture.planes(); ++p)
            widenRow(picture, picture.pixels.data() + r * picture.rowBytes(), p,
                     image->comps[p].data + r * picture.image.width);
    return image;
}

class COpenjpeg : public IPeer {
public:
    const char* name() const override { return "OpenJPEG"; }
    std::string version() const override { return opj_version(); }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        const Image image = planesOf(picture);
        opj_cparameters_t parameters;
        opj_set_default_encoder_parameters(&parameters);
        parameters.tcp_numlayers = 1;
        parameters.tcp_rates[0] = 0;
        parameters.cp_disto_alloc = 1;
        parameters.tcp_mct = picture.planes() == 3 ? 1 : 0;
        const Coder coder(opj_create_compress(OPJ_CODEC_J2K), opj_destroy_codec);
        require(opj_setup_encoder(coder.get(), &parameters, image.get()) == OPJ_TRUE);
        Memory memory{room.data(), room.size()};
        const Stream stream = openMemory(memory, false);
        require(opj_start_compress(coder.get(), image.get(), stream.get()) == OPJ_TRUE);
        require(opj_encode(coder.get(), stream.get()) == OPJ_TRUE);
        require(opj_end_compress(coder.get(), stream.get()) == OPJ_TRUE);
        return memory.end;
    }

    void decompress(std::span<const unsigned char> bytes, const Picture& layout,
                    std::span<unsigned char> pixels) override {
        // The library reads only.
        Memory memory{const_cast<unsigned char*>(bytes.data()), bytes.size()};
        const Stream stream = openMemory(memory, true);
        const Coder coder(opj_create_decompress(OPJ_CODEC_J2K), opj_destroy_codec);
        opj_dparameters_t parameters;
        opj_set_default_decoder_parameters(&parameters);
        require(opj_setup_decoder(coder.get(), &parameters) == OPJ_TRUE);
        opj_image_t* header = nullptr;
        require(opj_read_header(stream.get(), coder.get(), &header) == OPJ_TRUE);
        const Image image(header, opj_image_destroy);
        require(opj_decode(coder.get(), stream.get(), image.get()) == OPJ_TRUE);
        require(opj_end_decompress(coder.get(), stream.get()) == OPJ_TRUE);
        for (std::size_t r = 0; r < layout.image.height; ++r)
            for (std::size_t p = 0; p < layout.planes(); ++p)
                narrowRow(layout, image->comps[p].data + r * layout.image.width, p,
                          pixels.data() + r * layout.rowBytes());
    }
};

}  // namespace

Peer makeOpenjpeg() {
    return std::make_unique<COpenjpeg>();
}

}  // namespace bench
