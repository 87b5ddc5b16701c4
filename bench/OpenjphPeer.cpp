// OpenJPH: reversible 5/3, five levels, reversible colour transform.

#include <cstring>
#include <openjph/ojph_arch.h>
#include <openjph/ojph_base.h>
#include <openjph/ojph_file.h>
// The next ones need the ones above.
#include <openjph/ojph_codestream.h>
#include <openjph/ojph_mem.h>
#include <openjph/ojph_params.h>
#include <openjph/ojph_version.h>
#include <stdexcept>

#include "IPeer.h"
#include "PeerRows.h"

namespace bench {
namespace {

/// A file in the caller's memory, without an allocation.
class COutput : public ojph::outfile_base {
public:
    explicit COutput(std::span<unsigned char> bytes) : room(bytes) {}
    std::size_t write(const void* data, std::size_t sizeBytes) override {
        if (sizeBytes > room.size() - used) throw std::runtime_error("no room");
        std::memcpy(room.data() + used, data, sizeBytes);
        used += sizeBytes;
        return sizeBytes;
    }
    ojph::si64 tell() override { return static_cast<ojph::si64>(used); }
    std::size_t size() const { return used; }

private:
    std::span<unsigned char> room;
    std::size_t used = 0;
};

void describe(ojph::codestream& codestream, const Picture& picture) {
    ojph::param_siz size = codestream.access_siz();
    size.set_image_extent(ojph::point(picture.image.width, picture.image.height));
    size.set_num_components(static_cast<ojph::ui32>(picture.planes()));
    for (ojph::ui32 p = 0; p < picture.planes(); ++p)
        size.set_component(p, ojph::point(1, 1), picture.image.bits_per_pixel, false);
    ojph::param_cod coding = codestream.access_cod();
    coding.set_num_decomposition(5);
    coding.set_reversible(true);
    coding.set_color_transform(picture.planes() == 3);
    codestream.set_planar(false);
}

class COpenjph : public IPeer {
public:
    const char* name() const override { return "OpenJPH"; }
    std::string version() const override {
        return std::to_string(OPENJPH_VERSION_MAJOR) + '.' + std::to_string(OPENJPH_VERSION_MINOR) +
               '.' + std::to_string(OPENJPH_VERSION_PATCH);
    }

    std::size_t compress(const Picture& picture, std::span<unsigned char> room) override {
        ojph::codestream codestream;
        describe(codestream, picture);
        COutput output(room);
        codestream.write_headers(&output);
        ojph::ui32 plane = 0;
        ojph::line_buf* line = codestream.exchange(nullptr, plane);
        for (std::size_t r = 0; r < picture.image.height; ++r)
            for (std::size_t p = 0; p < picture.planes(); ++p) {
                widenRow(picture, picture.pixels.data() + r * picture.rowBytes(), plane, line->i32);
                line = codestream.exchange(line, plane);
            }
        codestream.flush();
        const std::size_t sizeBytes = output.size();
        codestream.close();
        return sizeBytes;
    }

    void decompress(std::span<const unsigned char> stream, const Picture& layout,
                    std::span<unsigned char> pixels) override {
        ojph::mem_infile input;
        input.open(stream.data(), stream.size());
        ojph::codestream codestream;
        codestream.read_headers(&input);
        codestream.set_planar(false);
        codestream.create();
        for (std::size_t r = 0; r < layout.image.height; ++r)
            for (std::size_t p = 0; p < layout.planes(); ++p) {
                ojph::ui32 plane = 0;
                const ojph::line_buf* line = codestream.pull(plane);
                narrowRow(layout, line->i32, plane, pixels.data() + r * layout.rowBytes());
            }
        codestream.close();
    }
};

}  // namespace

Peer makeOpenjph() {
    return std::make_unique<COpenjph>();
}

}  // namespace bench
