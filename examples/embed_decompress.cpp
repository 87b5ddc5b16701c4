// Decompresses a stream with the C++ object, which takes the header as it is: whoever gets streams
// from strangers looks at it first.

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <tesk/CTeskDecompressor.h>
#include <tesk/Status.h>
#include <vector>

#include "support.h"

namespace {

constexpr std::uint64_t kMostRawBytes = std::uint64_t{1} << 30;

// Returns: what speaks against a stream, or null.
const char* objection(const content& stream) {
    qmx::TKHeader header;
    if (stream.size <= sizeof header) return "too short for a stream";
    std::memcpy(&header, stream.bytes, sizeof header);
    if (!header.isRecognised()) return "not a stream";
    if (!header.isSupported()) return "image format not supported";
    return header.rawBytes() > kMostRawBytes ? "the image is too large" : nullptr;
}

int decompress(const char* streamName, const char* rawName) {
    content stream;
    if (!read_file(streamName, &stream)) return FAILURE;
    const std::unique_ptr<unsigned char, decltype(&std::free)> owner(stream.bytes, std::free);
    if (const char* reason = objection(stream)) return fail(streamName, reason);

    qmx::CTeskDecompressor decompressor(stream.bytes, stream.size);
    const std::size_t pixels = static_cast<std::size_t>(decompressor.getXSize()) *
                               static_cast<std::size_t>(decompressor.getYSize());
    std::vector<unsigned char> raw(pixels *
                                   static_cast<std::size_t>(decompressor.getBytesPerPixel()));
    const int result = decompressor.decompress(raw.data(), raw.size());
    if (!qmx::isUsable(result)) return fail(streamName, "not a valid stream");
    std::printf("%d x %d pixels: %s\n", decompressor.getXSize(), decompressor.getYSize(),
                result == qmx::kComplete ? "complete" : "cut");
    return write_file(rawName, raw.data(), raw.size()) ? SUCCESS : FAILURE;
}

}  // namespace

int main(int count, char** arguments) {
    if (count != 3) {
        std::fputs("usage: embed_decompress STREAM RAW\n", stderr);
        return WRONG_USAGE;
    }
    try {
        return decompress(arguments[1], arguments[2]);
    } catch (const std::bad_alloc&) {
        return fail(arguments[1], "the image does not fit into memory");
    }
}
