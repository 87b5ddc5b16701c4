// Any image, compressed exactly: it comes back in every decoder, unless a side is 1, and opens where a
// budget cuts it. Every CPU level gives the same stream.

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
    // The other decoders do with large images what they do with small ones, and take long.
    if (image.isLarge()) return;
    requireBack(image, fuzz::decodeObject(stream));
    qmx::CBitReader reader(stream.data() + sizeof header, stream.size() - sizeof header);
    requireBack(image, fuzz::decode(header, reader, qmx::MostBitsOfShort::inFiles));
}

/// Returns: the stream; empty when memory was refused or there is none.
Bytes compressTo(const fuzz::Image& image, std::size_t budgetBytes, tesk_result& result) {
    const fuzz::Codec codec = fuzz::makeCodec(TESK_UNVERIFIED);
    void* block = nullptr;
    const tesk_status status = tesk_compress_to_block(
        codec.get(), &image.geometry, image.pixels.data(), 0, budgetBytes, &block, &result);
    if (status == TESK_OUT_OF_MEMORY) return {};
    const std::uint32_t shorter = std::min(image.geometry.width, image.geometry.height);
    if (shorter == 1 && status == TESK_NOT_RESTORABLE) return {};
    fuzz::require(status == (budgetBytes == 0 ? TESK_OK : TESK_CUT), "the image compresses");
    const auto* bytes = static_cast<const unsigned char*>(block);
    Bytes stream(bytes, bytes + result.stream_bytes);
    tesk_release_block(codec.get(), block);
    fuzz::requireBounded(image, stream);
    return stream;
}

/// A budget somewhere in the stream, which the stream itself chooses.
void requireOpensWhereItIsCut(const fuzz::Image& image, const Bytes& stream, std::uint32_t rescue) {
    constexpr std::size_t kLeastBytes = 17;
    if (stream.size() <= kLeastBytes) return;
    std::size_t place = 0;
    for (const unsigned char byte : stream)
        place = 31 * place + byte;
    const std::size_t budget = kLeastBytes + place % (stream.size() - kLeastBytes);
    tesk_result result = TESK_RESULT_INIT;
    const Bytes cut = compressTo(image, budget, result);
    if (cut.empty()) return;
    fuzz::require(cut.size() == budget && std::equal(cut.begin(), cut.end(), stream.begin()),
                  "a budget cuts the exact stream");
    fuzz::require(result.loss == TESK_LOSS_BUDGET && result.rescue == rescue, "a cut is told");
    qmx::TKHeader header;
    std::memcpy(&header, cut.data(), sizeof header);
    const fuzz::Outcome decoded = fuzz::decodeC(cut, header);
    if (decoded.status == fuzz::kNoMemory) return;
    fuzz::require(qmx::isUsable(decoded.status), "a cut stream opens");
    fuzz::require(decoded.status == qmx::kCut || decoded.pixels == image.pixels,
                  "no part passes for the whole");
}

/// Returns: the exact stream; empty when memory was refused or there is none.
Bytes compressExactly(const fuzz::Image& image) {
    tesk_result result = TESK_RESULT_INIT;
    Bytes stream = compressTo(image, 0, result);
    if (stream.empty()) return {};
    requireBackEverywhere(image, stream);
    requireOpensWhereItIsCut(image, stream, result.rescue);
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
