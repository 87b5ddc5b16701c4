// The C interface with limits, a failing allocator, stops and any arguments: every call has a status
// that its contract names, and nothing stays allocated.

#include "FailingHeap.h"
#include "FuzzImage.h"

namespace {

/// More than the largest image takes, less than takes time.
constexpr std::uint64_t kMostOutputBytes = 500000;

struct Limits {
    std::size_t pixels;
    std::size_t memoryBytes;
};

void checkStatus(tesk_status status, const tesk_result& result, const Limits& limits,
                 bool stopped) {
    fuzz::require(status >= TESK_OK && status <= TESK_NOT_RESTORABLE, "a status is one of them");
    fuzz::require(!stopped || status != TESK_OK, "a stopped codec completes nothing");
    fuzz::require(limits.memoryBytes == 0 || result.peak_memory_bytes <= limits.memoryBytes,
                  "the limit of memory is kept");
}

void compressSome(fuzz::FuzzInput& input, tesk_codec* codec, const fuzz::Image& image,
                  const Limits& limits, bool stopped, fuzz::Bytes& stream) {
    tesk_result result = TESK_RESULT_INIT;
    const auto budget = static_cast<std::size_t>(input.flag() ? 0 : input.number(2));
    const bool toBlock = input.flag();
    fuzz::Bytes out(input.number(2));
    void* block = nullptr;
    const tesk_status status =
        toBlock ? tesk_compress_to_block(codec, &image.geometry, image.pixels.data(), 0, budget,
                                         &block, &result)
                : tesk_compress(codec, &image.geometry, image.pixels.data(), 0, budget, out.data(),
                                out.size(), &result);
    checkStatus(status, result, limits, stopped);
    const bool usable = status == TESK_OK || status == TESK_CUT;
    fuzz::require(usable || block == nullptr, "without a stream there is no block");
    fuzz::require(budget == 0 || result.stream_bytes <= budget, "the budget is kept");
    const unsigned char* bytes = toBlock ? static_cast<unsigned char*>(block) : out.data();
    if (usable) stream.assign(bytes, bytes + result.stream_bytes);
    if (block != nullptr) tesk_release_block(codec, block);
}

void decompressSome(fuzz::FuzzInput& input, tesk_codec* codec, fuzz::Bytes stream,
                    const Limits& limits, bool stopped) {
    if (!stream.empty() && input.flag()) stream[input.number(2) % stream.size()] ^= 1U;
    tesk_result result = TESK_RESULT_INIT;
    fuzz::Bytes out(input.number(3) % kMostOutputBytes);
    const auto how = static_cast<std::uint32_t>(input.number(1));
    const auto stride = static_cast<std::size_t>((how & 1) != 0 ? 0 : input.number(2));
    const std::uint32_t levels = how >> 1 & 7;
    const unsigned char nothing = 0;
    const tesk_status status =
        tesk_decompress_reduced(codec, stream.empty() ? &nothing : stream.data(), stream.size(),
                                levels, out.data(), out.size(), stride, &result);
    checkStatus(status, result, limits, stopped);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    fuzz::FailingHeap heap{input.flag() ? input.number(2) : ~std::uint64_t{0}};
    const Limits limits{input.flag() ? input.number(2) : 0, input.flag() ? input.number(3) : 0};
    tesk_options options = TESK_OPTIONS_INIT;
    options.max_pixels = limits.pixels;
    options.max_memory_bytes = limits.memoryBytes;
    options.most_kept_bytes = input.flag() ? input.number(3) : 0;
    heap.serve(options);
    tesk_codec* codec = nullptr;
    if (tesk_create(&options, &codec) != TESK_OK) return 0;

    fuzz::FuzzInput script(data, size);
    const fuzz::Image image = fuzz::takeImage(script);
    fuzz::Bytes stream;
    bool stopped = false;
    for (int call = 0; call < 8 && !input.isEmpty(); ++call) {
        switch (input.below(4)) {
            case 0:
                compressSome(input, codec, image, limits, stopped, stream);
                break;
            case 1:
                decompressSome(input, codec, stream, limits, stopped);
                break;
            case 2:
                tesk_stop(codec);
                stopped = true;
                break;
            default:
                tesk_clear_stop(codec);
                stopped = false;
        }
        if (input.flag()) continue;
        tesk_trim(codec);
        fuzz::require(heap.held == 1, "between calls nothing is held beside what is kept");
    }
    tesk_destroy(codec);
    fuzz::require(heap.held == 0, "in the end nothing is held");
    return 0;
}
