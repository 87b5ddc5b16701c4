// Row calls of the C interface in any order and of any number of rows, with stops, limits and an allocator
// that fails: wrong calls change nothing, every other answer is the one that calls for whole images have, and
// nothing stays allocated.

#include <algorithm>

#include "FailingHeap.h"
#include "FuzzImage.h"

namespace {

/// A codec, and what is under way in it.
class Rows {
public:
    Rows(const fuzz::Image& fuzzImage, tesk_codec* rowCodec, fuzz::FailingHeap& codecHeap)
        : image(fuzzImage), codec(rowCodec), heap(codecHeap), restored(image.pixels.size()) {
        const fuzz::Codec whole = fuzz::makeCodec();
        void* block = nullptr;
        wholeStatus = tesk_compress_to_block(whole.get(), &image.geometry, image.pixels.data(), 0,
                                             0, &block, &wholeResult);
        const auto* bytes = static_cast<const unsigned char*>(block);
        if (block != nullptr) stream.assign(bytes, bytes + wholeResult.stream_bytes);
        tesk_release_block(whole.get(), block);
    }

    void call(fuzz::FuzzInput& input) {
        switch (input.below(8)) {
            case 0:
                begin(Way::in, tesk_compress_begin(codec, &image.geometry, 0));
                break;
            case 1:
                begin(Way::out, stream.empty() ? TESK_INVALID_STREAM
                                               : tesk_decompress_begin(codec, stream.data(),
                                                                       stream.size(), nullptr));
                break;
            case 2:
            case 3:
                someRows(Way::in, rowCount(input));
                break;
            case 4:
            case 5:
                someRows(Way::out, rowCount(input));
                break;
            case 6:
                isStopped() || input.flag() ? end() : stop();
                break;
            default:
                tesk_abandon(codec);
                way = Way::none;
                setStop(false);
        }
        if (way != Way::none || input.flag()) return;
        tesk_trim(codec);
        fuzz::require(heap.held == 1, "without an image nothing is held beside what is kept");
    }

private:
    enum class Way { none, in, out };

    bool isStopped() const { return stopped; }
    void stop() { setStop(true); }
    void setStop(bool wanted) {
        stopped = wanted;
        wanted ? tesk_stop(codec) : tesk_clear_stop(codec);
    }
    std::uint32_t rowCount(fuzz::FuzzInput& input) const {
        return input.flag() ? rowsLeft : static_cast<std::uint32_t>(input.below(256));
    }
    /// Checks an answer that may end the image. Returns: whether it goes on.
    bool goesOn(tesk_status status) {
        fuzz::require((status == TESK_STOPPED) == stopped, "a stop ends every call");
        fuzz::require(status == TESK_OK || stopped || status == TESK_OUT_OF_MEMORY ||
                          status == TESK_LIMIT_EXCEEDED,
                      "nothing else fails");
        if (status != TESK_OK) way = Way::none;
        return status == TESK_OK;
    }
    void begin(Way wanted, tesk_status status) {
        if (stream.empty() && wanted == Way::out) return;
        if (way != Way::none)
            return fuzz::require(status == TESK_INVALID_ARGUMENT, "one image at a time");
        way = wanted;
        if (!goesOn(status)) return;
        rowsLeft = image.geometry.height;
        place = 0;
    }
    void someRows(Way wanted, std::uint32_t count) {
        // Bytes of rows beyond the image are never touched: the call is refused.
        const tesk_status status =
            wanted == Way::in ? tesk_compress_rows(codec, image.pixels.data() + next(), 0, count)
                              : tesk_decompress_rows(codec, restored.data() + next(), 0, count);
        const bool hasBytes = count == 0 || !image.pixels.empty() || rowBytes() == 0;
        if (way != wanted || count > rowsLeft || !hasBytes)
            return fuzz::require(status == TESK_INVALID_ARGUMENT, "wrong calls are refused");
        if (!goesOn(status)) return;
        rowsLeft -= count;
        place += count * rowBytes();
    }
    void end() {
        void* block = nullptr;
        tesk_result result = TESK_RESULT_INIT;
        const bool isIn = way != Way::out;
        const tesk_status status =
            isIn ? tesk_compress_end(codec, &block, &result) : tesk_decompress_end(codec, &result);
        if (way == Way::none || rowsLeft != 0)
            return fuzz::require(status == TESK_INVALID_ARGUMENT, "rows are missing");
        way = Way::none;
        if (status == TESK_OUT_OF_MEMORY || status == TESK_LIMIT_EXCEEDED) return;
        fuzz::require((status == TESK_STOPPED) == stopped, "a stop ends every call");
        if (!stopped) isIn ? checkStream(status, result, block) : checkImage(status);
        tesk_release_block(codec, block);
    }
    void checkStream(tesk_status status, const tesk_result& result, const void* block) const {
        if (wholeStatus == TESK_OUT_OF_MEMORY) return;
        const bool needsRows = status == TESK_NOT_RESTORABLE && result.loss == TESK_LOSS_WRAPPED;
        if (needsRows) {
            fuzz::require((wholeResult.rescue & TESK_RESCUE_DECLARED_BITS) != 0,
                          "bits are missing");
            fuzz::require(image.geometry.bits_per_pixel < 12, "16-bit coefficients do not fit");
            return;
        }
        fuzz::require(status == wholeStatus && result.loss == wholeResult.loss &&
                          result.rescue == wholeResult.rescue,
                      "rows come to what the image comes to");
        const auto* bytes = static_cast<const unsigned char*>(block);
        fuzz::require(
            result.stream_bytes == stream.size() && std::equal(stream.begin(), stream.end(), bytes),
            "the stream is that of the image");
    }
    void checkImage(tesk_status status) const {
        fuzz::require(status == TESK_OK && restored == image.pixels, "the rows are the image");
    }

    std::size_t rowBytes() const {
        return std::size_t{image.geometry.width} * image.geometry.bytes_per_pixel;
    }
    /// Returns: where the next row begins in an image.
    std::size_t next() const { return std::min(place, image.pixels.size()); }

    const fuzz::Image& image;
    tesk_codec* codec;
    fuzz::FailingHeap& heap;
    fuzz::Bytes restored;
    fuzz::Bytes stream;
    tesk_status wholeStatus;
    tesk_result wholeResult = TESK_RESULT_INIT;
    Way way = Way::none;
    std::uint32_t rowsLeft = 0;
    std::size_t place = 0;
    bool stopped = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const fuzz::MemoryLimit limit;
    fuzz::FuzzInput input(data, size);
    fuzz::FailingHeap heap{input.flag() ? input.number(2) : ~std::uint64_t{0}};
    tesk_options options = TESK_OPTIONS_INIT;
    options.max_memory_bytes = input.flag() ? input.number(3) : 0;
    heap.serve(options);
    tesk_codec* codec = nullptr;
    if (tesk_create(&options, &codec) != TESK_OK) return 0;
    fuzz::FuzzInput script(data, size);
    const fuzz::Image image = fuzz::takeImage(script);
    {
        Rows rows(image, codec, heap);
        for (int call = 0; call < 64 && !input.isEmpty(); ++call)
            rows.call(input);
    }
    tesk_destroy(codec);
    fuzz::require(heap.held == 0, "in the end nothing is held");
    return 0;
}
