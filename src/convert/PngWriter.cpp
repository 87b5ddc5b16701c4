#include "convert/PngWriter.h"

#include <bit>
#include <exception>
#include <new>

#include "convert/PngGuard.h"
#include "convert/PngMetadata.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

/// Level 6 takes 4.5 times as long for a photograph, and makes it no smaller.
constexpr int kCompressionLevel = 1;
/// To try all filters for each row takes a quarter longer, and gives files of -1 to 3 % less.
constexpr int kFilter = PNG_FILTER_AVG;

/// The structures of libpng, and what the sink threw while they were at work.
struct PngOutput {
    explicit PngOutput(IByteSink& byteSink) : sink(byteSink) {
        png = png_create_write_struct(PNG_LIBPNG_VER_STRING, &words, PngWords::onError,
                                      PngWords::onWarning);
        if (png == nullptr) throw std::bad_alloc();
        info = png_create_info_struct(png);
        if (info == nullptr) {
            png_destroy_write_struct(&png, nullptr);
            throw std::bad_alloc();
        }
        png_set_write_fn(png, this, write, [](png_structp) {});
        // Profiles that are known to be wrong are kept as they are.
        png_set_benign_errors(png, 1);
        png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
    }
    PngOutput(const PngOutput&) = delete;
    PngOutput& operator=(const PngOutput&) = delete;
    ~PngOutput() { png_destroy_write_struct(&png, &info); }

    static void write(png_structp png, png_bytep bytes, std::size_t sizeBytes) {
        auto* output = static_cast<PngOutput*>(png_get_io_ptr(png));
        if (!output->hasTaken(bytes, sizeBytes)) png_error(png, "the output cannot be written");
    }
    bool hasTaken(png_bytep bytes, std::size_t sizeBytes) {
        try {
            sink.write(ByteView(bytes, sizeBytes));
            return true;
        } catch (...) {
            thrown = std::current_exception();
            return false;
        }
    }

    IByteSink& sink;
    PngWords words;
    std::exception_ptr thrown;
    png_structp png = nullptr;
    png_infop info = nullptr;
};

int depthOf(const ImageFile& image) {
    if (image.isColour()) return 8;
    if (image.geometry.bytes_per_pixel == 2) return 16;
    return static_cast<int>(std::bit_ceil(image.geometry.bits_per_pixel));
}

/// What stands before the pixels. Runs within `completes`.
void setHead(PngOutput& output, const ImageFile& image) {
    png_set_IHDR(output.png, output.info, image.geometry.width, image.geometry.height,
                 depthOf(image), image.isColour() ? PNG_COLOR_TYPE_RGB : PNG_COLOR_TYPE_GRAY,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    png_set_compression_level(output.png, kCompressionLevel);
    if (depthOf(image) >= 8) png_set_filter(output.png, PNG_FILTER_TYPE_BASE, kFilter);
    putMetadata(output.png, output.info, image.metadata);
}

void writeAll(PngOutput& output, const ImageFile& image) {
    setHead(output, image);
    png_write_info(output.png, output.info);
    if (depthOf(image) == 16) png_set_swap(output.png);
    if (depthOf(image) < 8) png_set_packing(output.png);
    for (std::size_t r = 0; r < image.geometry.height; ++r)
        png_write_row(output.png, image.pixels() + r * image.rowBytes());
    png_write_end(output.png, output.info);
}

/// Takes nothing.
class CNoSink final : public IByteSink {
public:
    void write(ByteView) override {}
};

}  // namespace

bool keepsProfile(const ImageFile& image) {
    if (image.metadata.icc.empty()) return true;
    CNoSink sink;
    PngOutput output(sink);
    return completes(output.png, [&] { setHead(output, image); }) &&
           png_get_valid(output.png, output.info, PNG_INFO_iCCP) != 0;
}

void writePng(const ImageFile& image, IByteSink& sink) {
    PngOutput output(sink);
    if (completes(output.png, [&] { writeAll(output, image); })) return;
    if (output.thrown) std::rethrow_exception(output.thrown);
    throw Refusal{"no PNG can be made of it: " + std::string(output.words.error.data())};
}

}  // namespace qmx
