#include "container/FileIo.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <sys/stat.h>

namespace qmx {
namespace {

constexpr std::size_t kCopyBytes = 65536;

bool canSeek(std::FILE* file) {
    return fseeko(file, 0, SEEK_CUR) == 0;
}

/// Returns: one byte more than is left of a regular file, so that its end is met at once; for other
/// files a first guess.
std::size_t expectedBytes(std::FILE* file) {
    const std::optional<std::uint64_t> left = bytesLeft(file);
    return left ? static_cast<std::size_t>(*left) + 1 : kCopyBytes;
}

}  // namespace

std::optional<std::uint64_t> bytesLeft(std::FILE* file) {
    struct stat state {};
    const bool isRegular = fstat(fileno(file), &state) == 0 && S_ISREG(state.st_mode);
    if (!isRegular) return std::nullopt;
    const off_t left = state.st_size - std::max<off_t>(ftello(file), 0);
    return static_cast<std::uint64_t>(std::max<off_t>(left, 0));
}

void writeAll(std::FILE* file, FileRole role, const void* bytes, std::size_t sizeBytes) {
    if (sizeBytes == 0) return;  // bytes may then be null
    if (std::fwrite(bytes, 1, sizeBytes, file) != sizeBytes) throw FileError{role, errno};
}

std::size_t readUpTo(std::FILE* file, void* bytes, std::size_t sizeBytes) {
    const std::size_t got = std::fread(bytes, 1, sizeBytes, file);
    if (got < sizeBytes && std::ferror(file) != 0) throw FileError{FileRole::input, errno};
    return got;
}

void closeOutput(FilePtr file) {
    // A write that failed before left its reason in errno, which calls that succeed do not change.
    if (std::ferror(file.get()) != 0) throw FileError{FileRole::output, errno};
    if (std::fclose(file.release()) != 0) throw FileError{FileRole::output, errno};
}

FileBytes readRest(std::FILE* file) {
    FileBytes rest;
    try {
        for (std::size_t room = expectedBytes(file);; room *= 2) {
            auto larger = std::make_unique_for_overwrite<unsigned char[]>(room);
            std::copy_n(rest.bytes.get(), rest.sizeBytes, larger.get());
            rest.bytes = std::move(larger);
            const std::size_t free = room - rest.sizeBytes;
            const std::size_t got = readUpTo(file, rest.bytes.get() + rest.sizeBytes, free);
            rest.sizeBytes += got;
            if (got < free) return rest;
        }
    } catch (const std::bad_alloc&) {
        throw FileError{FileRole::input, ENOMEM};
    }
}

std::int64_t placeToReturn(std::FILE* file) {
    struct stat state {};
    const bool isRegular = fstat(fileno(file), &state) == 0 && S_ISREG(state.st_mode);
    return isRegular && canSeek(file) ? std::int64_t{ftello(file)} : -1;
}

void returnTo(std::FILE* file, std::int64_t place) {
    if (fseeko(file, static_cast<off_t>(place), SEEK_SET) != 0)
        throw FileError{FileRole::input, errno};
}

FilePtr makeSeekable(FilePtr file, const void* prefix, std::size_t prefixBytes) {
    if (canSeek(file.get())) return file;
    FilePtr spool(std::tmpfile());
    if (!spool) throw FileError{FileRole::temporary, errno};
    writeAll(spool.get(), FileRole::temporary, prefix, prefixBytes);
    std::array<unsigned char, kCopyBytes> bytes;
    while (const std::size_t got = readUpTo(file.get(), bytes.data(), bytes.size()))
        writeAll(spool.get(), FileRole::temporary, bytes.data(), got);
    if (fseeko(spool.get(), static_cast<off_t>(prefixBytes), SEEK_SET) != 0)
        throw FileError{FileRole::temporary, errno};
    return spool;
}

}  // namespace qmx
