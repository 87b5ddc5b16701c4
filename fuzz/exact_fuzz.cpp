// Any image, compressed exactly: it comes back in every decoder, unless a side is 1. Every CPU level
// gives the same stream.

#include <algorithm>

#include "FuzzImage.h"
#include "FuzzLevels.h"

namespace {

using fuzz::Bytes;

void requireBack(const fuzz::Image& image, const fuzz::Outcome& decoded) {
    if (decoded.status == fuzz::kNoMemory) return;
    fuzz::require(decoded.status == qmx::kComplete, "an exact stream is complete");
    fuzz::require(decoded.pixels == image.pixels, "an exact stream restores its image");
}

void requireBackEverywhere(const fuzz::Image& image, const Bytes& stream) {
    qmx::TKHeader header;
    std::memcpy(&header, stream.data(), sizeof header);
    requireBack(image, fuzz::decodeC(stream, header));
    requireBack(image, fuzz::decodeObject(stream));
    qmx::CBitReader reader(stream.data() + sizeof header, stream.size() - sizeof header);
    requireBack(image, fuzz::decode(header, reader, qmx::MostBitsOfShort::inFiles));
}

/// Returns: the exact stream; empty when memory was refused or there is none.
Bytes compressExactly(const fuzz::Image& image) {
    const fuzz::Codec codec = fuzz::makeCodec(TESK_UNVERIFIED);
    void* block = nullptr;
    tesk_result result = TESK_RESULT_INIT;
    const tesk_status status = tesk_compress_to_block(codec.get(), &image.geometry,
                                                      image.pixels.data(), 0, 0, &block, &result);
    if (status == TESK_OUT_OF_MEMORY) return {};
    const std::uint32_t shorter = std::min(image.geometry.width, image.geometry.height);
    if (shorter == 1 && status == TESK_NOT_RESTORABLE) return {};
    fuzz::require(status == TESK_OK, "the image compresses");
    const auto* bytes = static_cast<const unsigned char*>(block);
    Bytes stream(bytes, bytes + result.stream_bytes);
    tesk_release_block(codec.get(), block);
    requireBackEverywhere(image, stream);
    // Large images are coded in another way then.
    const Bytes plain = result.rescue == 0 ? fuzz::compress(image, 0) : Bytes();
    fuzz::require(plain.empty() || plain == stream, "without a rescue the stream is the plain one");
    return stream;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    const fuzz::Image image = fuzz::takeImage(input);
    fuzz::sameAtEveryCpuLevel([&] { return compressExactly(image); });
    return 0;
}
