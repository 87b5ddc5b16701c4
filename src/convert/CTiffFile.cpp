#include "convert/CTiffFile.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <new>
#include <string_view>

#include "convert/Refusal.h"

namespace qmx {
namespace {

/// What libtiff may need beside a strip, for its tables and fields.
constexpr std::size_t kMostTableBytes = 64 << 20;
constexpr std::string_view kUnknownTag = "Unknown field with tag";
/// Files of another order of bits, which is read as it was meant.
constexpr std::string_view kOldCodes = "Old-style LZW codes";
/// Offsets of 32 bits reach no further, and samples that do not compress grow a little.
constexpr std::uint64_t kMostRawBytesOfTiff = 3'900'000'000;

bool beginsWith(const char* text, std::string_view words) {
    return std::string_view(text).starts_with(words);
}

}  // namespace

CTiffFile::CTiffFile(ByteView file) : input(file) {
    // Strips as they are in the file cannot be longer than it.
    open("rm", file.size() + kMostTableBytes);
}

CTiffFile::CTiffFile(std::vector<unsigned char>& written, std::uint64_t rawBytes)
    : output(&written) {
    open(rawBytes > kMostRawBytesOfTiff ? "w8m" : "wm", 0);
}

void CTiffFile::open(const char* mode, std::size_t mostBytesAtOnce) {
    TIFFOpenOptions* options = TIFFOpenOptionsAlloc();
    if (options == nullptr) throw std::bad_alloc();
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, static_cast<tmsize_t>(mostBytesAtOnce));
    TIFFOpenOptionsSetErrorHandlerExtR(options, onError, this);
    TIFFOpenOptionsSetWarningHandlerExtR(options, onWarning, this);
    tiff = TIFFClientOpenExt(
        "TIFF", mode, this, read, write, seek, [](thandle_t) { return 0; }, size, nullptr, nullptr,
        options);
    TIFFOpenOptionsFree(options);
    if (tiff == nullptr) refuse();
}

CTiffFile::~CTiffFile() {
    close();
}

bool CTiffFile::close() {
    if (tiff != nullptr) TIFFClose(tiff);
    tiff = nullptr;
    return !hasFailed;
}

std::string CTiffFile::words() const {
    return error[0] == '\0' ? "libtiff does not say why" : error.data();
}

void CTiffFile::refuse() const {
    throw Refusal{"is a damaged TIFF: " + words()};
}

int CTiffFile::onError(TIFF*, void* self, const char*, const char* format, va_list values) {
    auto* file = static_cast<CTiffFile*>(self);
    file->hasFailed = true;
    if (file->error[0] == '\0')
        std::vsnprintf(file->error.data(), file->error.size(), format, values);
    return 1;
}

int CTiffFile::onWarning(TIFF* tiff, void* self, const char* module, const char* format,
                         va_list values) {
    auto* file = static_cast<CTiffFile*>(self);
    if (beginsWith(format, kUnknownTag)) return 1;
    if (file->isInSamples && !beginsWith(format, kOldCodes))
        return onError(tiff, self, module, format, values);
    Words words{};
    std::vsnprintf(words.data(), words.size(), format, values);
    // A page that is read twice has its warnings twice.
    const auto end = file->warned.begin() + static_cast<std::ptrdiff_t>(file->warnedCount);
    if (end != file->warned.end() && std::find(file->warned.begin(), end, words) == end)
        file->warned[file->warnedCount++] = words;
    return 1;
}

std::vector<std::string> CTiffFile::warnings() const {
    std::vector<std::string> words;
    for (std::size_t i = 0; i < warnedCount; ++i)
        words.emplace_back(warned[i].data());
    return words;
}

tmsize_t CTiffFile::read(thandle_t self, void* to, tmsize_t sizeBytes) {
    auto* file = static_cast<CTiffFile*>(self);
    const std::uint64_t left = file->sizeBytes() - std::min(file->sizeBytes(), file->position);
    const auto wanted = static_cast<std::uint64_t>(sizeBytes);
    const std::uint64_t count = std::min(left, wanted);
    file->metEnd = file->metEnd || count < wanted;
    const unsigned char* bytes =
        file->output != nullptr ? file->output->data() : file->input.data();
    if (count > 0) std::memcpy(to, bytes + file->position, count);
    file->position += count;
    return static_cast<tmsize_t>(count);
}

// libtiff is C: what a vector throws must not go through it.
tmsize_t CTiffFile::write(thandle_t self, void* from, tmsize_t sizeBytes) try {
    auto* file = static_cast<CTiffFile*>(self);
    if (file->output == nullptr) return -1;
    const std::uint64_t end = file->position + static_cast<std::uint64_t>(sizeBytes);
    if (end > file->output->size()) file->output->resize(end);
    std::memcpy(file->output->data() + file->position, from, static_cast<std::size_t>(sizeBytes));
    file->position = end;
    return sizeBytes;
} catch (const std::bad_alloc&) {
    return -1;
}

toff_t CTiffFile::seek(thandle_t self, toff_t offset, int whence) {
    auto* file = static_cast<CTiffFile*>(self);
    if (whence == SEEK_CUR) offset += file->position;
    if (whence == SEEK_END) offset += file->sizeBytes();
    file->position = offset;
    return offset;
}

toff_t CTiffFile::size(thandle_t self) {
    return static_cast<CTiffFile*>(self)->sizeBytes();
}

}  // namespace qmx
