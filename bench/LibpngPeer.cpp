// libpng: PNG with its defaults, all filters and zlib at level 6. 12-bit samples are stored as 16-bit ones.

#include <png.h>
#include <stdexcept>

#include "IPeer.h"

namespace bench {
namespace {

/// What the simple interface of libpng works on.
class CPngImage {
public:
    CPngImage() { image.version = PNG_IMAGE_VERSION; }
    CPngImage(const CPngImage&) = delete;
    CPngImage& operator=(const CPngImage&) = delete;
    ~CPngImage() { png_image_free(&image); }

    /// 16 bits are called linear there: then they stay as they are.
    void describe(const Picture& picture) {
        image.width = picture.image.width;
        image.height = picture.image.height;
        image.format = formatOf(picture);
    }
    static png_uint_32 formatOf(const Picture& picture) {
        if (picture.bytesPerSample() == 2) return PNG_FORMAT_LINEAR_Y;
        return picture.planes() == 3 ? PNG_FORMAT_RGB : PNG_FORMAT_GRAY;
    }
    void require(int succeeded) const {
        if (succeeded == 0) throw std::runtime_error(image.message);
    }

    png_image image{};
};

class CLibpng : public IPeer {
public:
    const char* name() const override { return "PNG"; }
    std::string version() const override { return png_get_libpng_ver(nullptr); }
    bool isSlow() const override { return true; }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        CPngImage png;
        png.describe(picture);
        png_alloc_size_t sizeBytes = room.size();
        png.require(png_image_write_to_memory(&png.image, room.data(), &sizeBytes, 0,
                                              picture.pixels.data(), 0, nullptr));
        return sizeBytes;
    }

    void decompress(std::span<const unsigned char> stream, const Picture& layout,
                    std::span<unsigned char> pixels) override {
        CPngImage png;
        png.require(png_image_begin_read_from_memory(&png.image, stream.data(), stream.size()));
        png.image.format = CPngImage::formatOf(layout);
        png.require(png_image_finish_read(&png.image, nullptr, pixels.data(), 0, nullptr));
    }
};

}  // namespace

Peer makeLibpng() {
    return std::make_unique<CLibpng>();
}

}  // namespace bench
