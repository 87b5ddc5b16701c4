#include "info/CStreamFile.h"

#include <cerrno>
#include <cstring>
#include <unistd.h>

#include "wavelet/LevelGeometry.h"

namespace qmx {
namespace {

FilePtr openInput(const char* name) {
    const bool isStandardInput = std::strcmp(name, "-") == 0;
    // The standard input is closed with this file, so it gets a number of its own.
    FilePtr file(isStandardInput ? fdopen(dup(STDIN_FILENO), "rb") : std::fopen(name, "rb"));
    if (!file) throw FileError{FileRole::input, errno};
    return file;
}

}  // namespace

CStreamFile::CStreamFile(const char* name) : file(openInput(name)) {
    headerBytes = readUpTo(file.get(), &header, sizeof header);
    totalBytes = headerBytes;
    if (!hasHeader()) return;
    file = makeSeekable(std::move(file), &header, sizeof header);
    dataStartBytes = ftello(file.get());
    if (dataStartBytes < 0 || fseeko(file.get(), 0, SEEK_END) != 0)
        throw FileError{FileRole::input, errno};
    const std::int64_t endBytes = ftello(file.get());
    if (endBytes > dataStartBytes)
        totalBytes += static_cast<std::uint64_t>(endBytes - dataStartBytes);
}

CBitFileReader CStreamFile::bits() const {
    if (fseeko(file.get(), dataStartBytes, SEEK_SET) != 0) throw FileError{FileRole::input, errno};
    return CBitFileReader(file.get());
}

void CStreamFile::read(std::uint64_t offset, std::span<unsigned char> to) const {
    const std::int64_t start = dataStartBytes - static_cast<std::int64_t>(sizeof header);
    if (fseeko(file.get(), start + static_cast<std::int64_t>(offset), SEEK_SET) != 0)
        throw FileError{FileRole::input, errno};
    if (readUpTo(file.get(), to.data(), to.size()) != to.size())
        throw FileError{FileRole::input, EIO};
}

void CStreamFile::checkReads() const {
    if (std::ferror(file.get()) != 0) throw FileError{FileRole::input, EIO};
}

SectionBounds sectionBoundsOf(const TKHeader& header) {
    return {header.planes(), levelCount(header.xSize, header.ySize),
            sampleCountBits(header.xSize, header.ySize)};
}

}  // namespace qmx
