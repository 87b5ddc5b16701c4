#include "convert/CPngSource.h"

#include <new>
#include <string_view>

#include "convert/ImageChecks.h"
#include "convert/Refusal.h"

namespace qmx {
namespace {

/// What a profile or a text may have when it is inflated, and how many texts there may be. Small files can hold
/// large ones.
constexpr png_alloc_size_t kMostChunkBytes = 16 << 20;
constexpr png_uint_32 kMostCachedChunks = 32;
/// So many bytes of a file that ends early are not looked at.
constexpr std::size_t kInputBytes = 1024;
/// Sides are looked at by us, who have words for it.
constexpr png_uint_32 kAnySide = 0x7FFFFFFF;

}  // namespace

CPngSource::CPngSource(ByteView fileBytes) : file(fileBytes) {
    png = png_create_read_struct(PNG_LIBPNG_VER_STRING, &words, PngWords::onError,
                                 PngWords::onWarning);
    if (png == nullptr) throw std::bad_alloc();
    info = png_create_info_struct(png);
    if (info == nullptr) {
        png_destroy_read_struct(&png, nullptr, nullptr);
        throw std::bad_alloc();
    }
    png_set_read_fn(png, this, read);
    png_set_user_limits(png, kAnySide, kAnySide);
    png_set_chunk_malloc_max(png, kMostChunkBytes);
    png_set_chunk_cache_max(png, kMostCachedChunks);
    png_set_compression_buffer_size(png, kInputBytes);
    // A profile that says sRGB wrongly is kept, and libpng says no more about it.
    png_set_option(png, PNG_SKIP_sRGB_CHECK_PROFILE, PNG_OPTION_ON);
}

void CPngSource::read(png_structp png, png_bytep to, std::size_t sizeBytes) {
    auto* source = static_cast<CPngSource*>(png_get_io_ptr(png));
    if (sizeBytes > source->bytesLeft()) {
        source->isAtEnd = true;
        png_error(png, "the file ends early");
    }
    std::memcpy(to, source->file.data() + source->next, sizeBytes);
    source->next += sizeBytes;
}

void CPngSource::requireMemory() const {
    // libpng and zlib have several words for it.
    if (std::string_view(words.error.data()).find("memory") != std::string_view::npos)
        throw std::bad_alloc();
}

void CPngSource::refuse() const {
    requireMemory();
    throw Refusal{"is a damaged PNG: " + std::string(words.error.data())};
}

void CPngSource::refuseInRow(std::size_t row, std::size_t height) const {
    requireMemory();
    if (isAtEnd) refuseShortFile(row + 1, height);
    throw Refusal{"is a damaged PNG: " + std::string(words.error.data()) + ", in row " +
                  std::to_string(row + 1) + " of " + std::to_string(height)};
}

}  // namespace qmx
