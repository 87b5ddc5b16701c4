#include "api/CodecHandle.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <new>
#include <utility>

#include "container/CoefficientDispatch.h"
#include "image/CImageData.h"

#define QMX_TEXT_OF(x) #x
#define QMX_TEXT(x) QMX_TEXT_OF(x)

namespace qmx {
namespace {

constexpr char kVersion[] =
    QMX_TEXT(TESK_VERSION_MAJOR) "." QMX_TEXT(TESK_VERSION_MINOR) "." QMX_TEXT(TESK_VERSION_PATCH);

constexpr std::uint32_t kGreatestSide = 65535;

bool areValid(const tesk_options& options) {
    const bool bothHooksOrNone = (options.allocate == nullptr) == (options.release == nullptr);
    const bool hasKnownFlags = (options.flags & ~std::uint32_t{TESK_PLAIN | TESK_UNVERIFIED}) == 0;
    return isUnderstood(options) && bothHooksOrNone && hasKnownFlags;
}

}  // namespace

bool clearResult(tesk_result* result) {
    if (result == nullptr) return true;
    if (!hasKnownSize(*result)) return false;
    result->stream_bytes = 0;
    result->peak_memory_bytes = 0;
    result->loss = TESK_LOSS_NONE;
    result->rescue = 0;
    return true;
}

tesk_status readHeader(const void* stream, std::size_t streamBytes, TKHeader& header) {
    if (streamBytes < sizeof header) return TESK_INVALID_STREAM;
    std::memcpy(&header, stream, sizeof header);
    if (!header.isRecognised()) return TESK_INVALID_STREAM;
    return header.isSupported() ? TESK_OK : TESK_UNSUPPORTED_FORMAT;
}

tesk_status checkImage(const tesk_image& image, TKHeader& header) {
    const bool hasLayout = image.bytes_per_pixel >= 1 && image.bytes_per_pixel <= 3;
    const std::uint32_t sampleBits = image.bytes_per_pixel == 2 ? 16 : 8;
    const bool hasBits = image.bits_per_pixel >= 1 && image.bits_per_pixel <= sampleBits;
    const bool hasSides = image.width <= kGreatestSide && image.height <= kGreatestSide;
    if (!hasLayout || !hasBits || !hasSides) return TESK_UNSUPPORTED_FORMAT;
    header = makeHeader(image.bytes_per_pixel, image.bits_per_pixel, image.width, image.height);
    return TESK_OK;
}

tesk_status checkShape(const tesk_image& image, TKHeader& header) {
    tesk_image anyBits = TESK_IMAGE_INIT;
    anyBits.width = image.width;
    anyBits.height = image.height;
    anyBits.bytes_per_pixel = image.bytes_per_pixel;
    anyBits.bits_per_pixel = 1;
    return checkImage(anyBits, header);
}

tesk_status checkCompression(const tesk_codec* codec, const tesk_image* image,
                             std::size_t budgetBytes, TKHeader& header) {
    if (codec == nullptr || image == nullptr || !isUnderstood(*image)) return TESK_INVALID_ARGUMENT;
    if (budgetBytes != 0 && budgetBytes < sizeof(TKHeader)) return TESK_INVALID_ARGUMENT;
    if (codec->isBusy()) return TESK_INVALID_ARGUMENT;
    if (codec->isStopped()) return TESK_STOPPED;
    return checkImage(*image, header);
}

tesk_status checkDecompression(const tesk_codec* codec, const void* stream, std::size_t streamBytes,
                               TKHeader& header) {
    if (codec == nullptr || stream == nullptr || codec->isBusy()) return TESK_INVALID_ARGUMENT;
    if (codec->isStopped()) return TESK_STOPPED;
    return readHeader(stream, streamBytes, header);
}

bool hasAddresses(const TKHeader& header) {
    return std::in_range<std::ptrdiff_t>(header.rawBytes());
}

tesk_status checkPixels(const tesk_codec& codec, const TKHeader& header) {
    const std::size_t pixels = std::size_t{header.xSize} * header.ySize;
    const bool allowed = codec.maxPixels == 0 || pixels <= codec.maxPixels;
    return allowed ? TESK_OK : TESK_LIMIT_EXCEEDED;
}

std::size_t leastBytes(const TKHeader& header) {
    constexpr std::size_t kFewestRows = 4;
    const std::size_t rows = std::min<std::size_t>(header.ySize, kFewestRows);
    const auto columns = static_cast<std::size_t>(CImageData<short>::paddedWidth(header.xSize));
    const std::size_t samples = rows * columns * static_cast<std::size_t>(header.planes());
    return dispatchCoefficients(
        header, MostBitsOfShort::inMemory, [&]<class T>() { return samples * sizeof(T); },
        [] { return std::size_t{0}; });
}

std::size_t strideOrDefault(std::size_t strideBytes, const TKHeader& header) {
    // An image without pixels may have any stride, as long as it counts as one.
    if (header.rawBytes() == 0) return 1;
    const std::size_t rowBytes = header.rawRowBytes();
    if (strideBytes == 0 || strideBytes == rowBytes) return rowBytes;
    const std::size_t most = std::numeric_limits<std::ptrdiff_t>::max() / std::size_t{header.ySize};
    return strideBytes > rowBytes && strideBytes <= most ? strideBytes : 0;
}

}  // namespace qmx

const char* tesk_version(void) {
    return qmx::kVersion;
}

const char* tesk_status_message(int status) {
    switch (status) {
        case TESK_OK:
            return "complete";
        case TESK_CUT:
            return "usable, but not complete: the stream was cut at the budget, or ended early";
        case TESK_STOPPED:
            return "stopped on request";
        case TESK_INVALID_STREAM:
            return "not a valid stream";
        case TESK_UNSUPPORTED_FORMAT:
            return "image format not supported: 8-bit gray, 16-bit gray or 8-bit R, G, B, sides up "
                   "to 65535; bits count one sample (8 for R, G, B, not 24)";
        case TESK_LIMIT_EXCEEDED:
            return "beyond the limits of the caller";
        case TESK_OUT_OF_MEMORY:
            return "out of memory";
        case TESK_BUFFER_TOO_SMALL:
            return "buffer too small";
        case TESK_INVALID_ARGUMENT:
            return "invalid argument";
        case TESK_NOT_RESTORABLE:
            return "no stream restores this image";
        default:
            return "unknown status";
    }
}

const char* tesk_loss_message(int loss) {
    switch (loss) {
        case TESK_LOSS_NONE:
            return "no loss";
        case TESK_LOSS_BUDGET:
            return "the stream was cut at the budget";
        case TESK_LOSS_SIDE_OF_ONE:
            return "an image with a side of 1 pixel has no coefficients";
        case TESK_LOSS_THIN_IMAGE:
            return "decoders filter the longer side of an image with a side of 2 or 3 pixels";
        case TESK_LOSS_WRAPPED:
            return "coefficients do not fit 16 bits: samples exceed the bits per pixel";
        case TESK_LOSS_ENDLESS_RUN:
            return "a section covers more coefficients than a run can pass over";
        case TESK_LOSS_LONG_SECTION:
            return "a section is longer than its length field can say";
        case TESK_LOSS_UNCHECKED:
            return "there was no memory to find out whether the image comes back";
        case TESK_LOSS_UNKNOWN:
            return "the stream decodes to another image";
        default:
            return "unknown loss";
    }
}

tesk_status tesk_probe(const void* stream, size_t streamBytes, tesk_image* image) {
    if (stream == nullptr || image == nullptr || !qmx::hasKnownSize(*image))
        return TESK_INVALID_ARGUMENT;
    qmx::TKHeader header;
    const tesk_status status = qmx::readHeader(stream, streamBytes, header);
    if (status == TESK_INVALID_STREAM) return status;
    image->width = header.xSize;
    image->height = header.ySize;
    image->bytes_per_pixel = header.bytesPerPixel;
    image->bits_per_pixel = header.bitsPerPixel;
    return status;
}

tesk_status tesk_create(const tesk_options* options, tesk_codec** codec) {
    if (codec == nullptr) return TESK_INVALID_ARGUMENT;
    *codec = nullptr;
    if (options != nullptr && !qmx::areValid(*options)) return TESK_INVALID_ARGUMENT;

    // An older struct ends earlier: its codec has the defaults of what came since.
    tesk_options chosen = TESK_OPTIONS_INIT;
    if (options != nullptr)
        std::memcpy(&chosen, options, std::min(options->struct_bytes, sizeof chosen));
    const qmx::AllocatorHooks hooks =
        chosen.allocate != nullptr
            ? qmx::AllocatorHooks{chosen.allocate, chosen.release, chosen.user}
            : qmx::defaultHooks();
    void* storage = hooks.allocate(hooks.user, sizeof(tesk_codec));
    if (storage == nullptr) return TESK_OUT_OF_MEMORY;
    *codec = new (storage) tesk_codec{.hooks = hooks,
                                      .kept = qmx::CKeptMemory(hooks, chosen.most_kept_bytes),
                                      .maxPixels = chosen.max_pixels,
                                      .maxMemoryBytes = chosen.max_memory_bytes,
                                      .flags = chosen.flags};
    return TESK_OK;
}

void tesk_destroy(tesk_codec* codec) {
    if (codec == nullptr) return;
    tesk_abandon(codec);
    const qmx::AllocatorHooks hooks = codec->hooks;
    codec->~tesk_codec();
    hooks.release(hooks.user, codec);
}

void tesk_trim(tesk_codec* codec) {
    if (codec != nullptr) codec->kept.releaseAll();
}

void tesk_stop(tesk_codec* codec) {
    codec->stopRequested.store(true, std::memory_order_relaxed);
}

void tesk_clear_stop(tesk_codec* codec) {
    codec->stopRequested.store(false, std::memory_order_relaxed);
}

void tesk_release_block(tesk_codec* codec, void* block) {
    if (block != nullptr) codec->hooks.release(codec->hooks.user, block);
}
