// Compresses a raw image with the C++ object. The block of the stream belongs to the object here.

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <new>
#include <tesk/CTeskCompressor.h>
#include <tesk/Status.h>

#include "support.h"

namespace {

int compress(char** arguments) {
    tesk_image image;
    content pixels;
    if (!read_image(arguments, &image, &pixels)) return FAILURE;
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(pixels.bytes, std::free);

    qmx::CTeskCompressor compressor(static_cast<int>(image.width), static_cast<int>(image.height),
                                    static_cast<int>(image.bits_per_pixel),
                                    static_cast<int>(image.bytes_per_pixel), pixels.bytes, 0, true);
    const int result = compressor.compress();
    if (result == qmx::kInvalidSection) return fail(arguments[0], "image format not supported");
    if (!qmx::isUsable(result) || compressor.getBlock() == nullptr)
        return fail(arguments[5], "no stream came out");
    std::printf("%zu bytes become %lu: %s\n", raw_bytes(&image), compressor.getStreamSize(),
                result == qmx::kComplete ? "complete" : "cut");
    return write_file(arguments[5], compressor.getBlock(), compressor.getStreamSize()) ? SUCCESS
                                                                                       : FAILURE;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 7) {
        std::fputs("usage: embed_compress " IMAGE_USAGE " STREAM\n", stderr);
        return WRONG_USAGE;
    }
    try {
        return compress(arguments + 1);
    } catch (const std::bad_alloc&) {
        return fail(arguments[1], "does not fit into memory");
    }
}
