#include "container/FileIo.h"

#include <array>
#include <cerrno>

namespace qmx {
namespace {

constexpr std::size_t kCopyBytes = 65536;

bool canSeek(std::FILE* file) {
    return fseeko(file, 0, SEEK_CUR) == 0;
}

}  // namespace

void writeAll(std::FILE* file, FileRole role, const void* bytes, std::size_t sizeBytes) {
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
