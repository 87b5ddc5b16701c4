// Any bytes as a stream: it ends where the decoder ends, also without what stands behind its end, and with
// other bytes in its place.

#include "FuzzCodec.h"

namespace {

using fuzz::Bytes;

/// Decoding larger images would be slow.
constexpr std::size_t kMostPixels = std::size_t{1} << 14;

struct Measured {
    tesk_status status;
    std::size_t length;

    bool operator==(const Measured&) const = default;
};

Measured measure(const unsigned char* stream, std::size_t sizeBytes) {
    std::size_t length = ~std::size_t{0};
    const tesk_status status = tesk_measure(stream, sizeBytes, &length);
    return {status, length};
}

/// Returns: what tesk_decompress says, which may be for lack of memory.
tesk_status decompress(const Bytes& stream, const tesk_image& image) {
    const fuzz::Codec codec = fuzz::makeCodec();
    Bytes pixels(std::size_t{3} * image.width * image.height);
    return tesk_decompress(codec.get(), stream.data(), stream.size(), pixels.data(), pixels.size(),
                           0, nullptr);
}

/// Of a stream that is complete: it ends there, with anything behind it and with nothing.
void requireTheSameEnd(const Bytes& stream, std::size_t length) {
    constexpr std::size_t kMostPaddingBytes = 2;
    Bytes other(stream.begin(), stream.begin() + static_cast<std::ptrdiff_t>(length));
    fuzz::require(measure(other.data(), length) == Measured{TESK_OK, length}, "an end is an end");
    const Measured before = measure(other.data(), length - kMostPaddingBytes - 1);
    fuzz::require(before.status != TESK_OK, "no part passes for the whole");
    // Bytes where there was nothing may be padding.
    if (length == stream.size()) return;
    for (std::size_t i = length; i < stream.size(); ++i)
        other.push_back(static_cast<unsigned char>(~stream[i]));
    fuzz::require(measure(other.data(), other.size()).length == length, "the rest plays no part");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    const Bytes stream(data, data + size);
    if (stream.empty()) return 0;
    const Measured found = measure(stream.data(), size);
    if (found.status == TESK_OK) {
        fuzz::require(found.length <= size, "a stream is among its bytes");
        requireTheSameEnd(stream, found.length);
    } else {
        fuzz::require(found.length == (found.status == TESK_CUT ? size : 0),
                      "else there is no end");
    }
    tesk_image image = TESK_IMAGE_INIT;
    const tesk_status probed = tesk_probe(stream.data(), size, &image);
    if (probed != TESK_OK) {
        fuzz::require(found.status == probed, "what is no stream has no end");
        return 0;
    }
    if (std::size_t{image.width} * image.height > kMostPixels) return 0;
    const tesk_status decoded = decompress(stream, image);
    if (decoded != TESK_OUT_OF_MEMORY)
        fuzz::require(found.status == decoded, "the decoder says the same");
    return 0;
}
