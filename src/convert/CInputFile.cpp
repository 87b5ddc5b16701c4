#include "convert/CInputFile.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>

#include "convert/Refusal.h"

namespace qmx {
namespace {

/// What is read at first where nothing says how much there is.
constexpr std::size_t kFirstBytes = 1 << 20;

[[noreturn]] void refuseReading(int errorNumber) {
    throw Refusal{std::string("cannot be read: ") + std::strerror(errorNumber)};
}

CFileNumber openInput(const std::string& name) {
    // The standard input is closed with this number, so it gets one of its own.
    const bool isStandardInput = name == "-";
    const int number =
        isStandardInput ? dup(STDIN_FILENO) : open(name.c_str(), O_RDONLY | O_CLOEXEC);
    if (number < 0) refuseReading(errno);
    return CFileNumber(number);
}

/// Returns: bytes that came, 0 at the end.
std::size_t readSome(const CFileNumber& file, unsigned char* to, std::size_t sizeBytes) {
    while (true) {
        const ssize_t count = read(file.get(), to, sizeBytes);
        if (count >= 0) return static_cast<std::size_t>(count);
        if (errno != EINTR) refuseReading(errno);
    }
}

std::size_t readUpTo(const CFileNumber& file, Buffer& buffer, std::size_t from) {
    std::size_t present = from;
    while (present < buffer.sizeBytes) {
        const std::size_t count =
            readSome(file, buffer.bytes.get() + present, buffer.sizeBytes - present);
        if (count == 0) break;
        present += count;
    }
    return present;
}

struct stat factsOf(const CFileNumber& file) {
    struct stat facts {};
    if (fstat(file.get(), &facts) != 0) refuseReading(errno);
    if (S_ISDIR(facts.st_mode)) throw Refusal{"is a folder: -r takes what is in it"};
    return facts;
}

Buffer readBegin(const CFileNumber& file, std::size_t count) {
    Buffer begin(count);
    begin.sizeBytes = readUpTo(file, begin, 0);
    return begin;
}

[[noreturn]] void refuseLength(std::uint64_t mostBytes) {
    throw Refusal{"has more than the " + std::to_string(mostBytes) +
                  " bytes that an image within --max-pixels may have"};
}

Buffer enlarged(const Buffer& buffer, std::size_t sizeBytes) {
    Buffer larger(sizeBytes);
    std::copy_n(buffer.bytes.get(), std::min(buffer.sizeBytes, sizeBytes), larger.bytes.get());
    return larger;
}

}  // namespace

CInputFile::CInputFile(const std::string& name)
    : file(openInput(name)), found(factsOf(file)), begin(readBegin(file, kHeadBytes)) {}

std::optional<std::uint64_t> CInputFile::announcedBytes() const {
    // Files that the system makes up have 0 bytes until they are read.
    if (!S_ISREG(found.st_mode) || found.st_size == 0) return std::nullopt;
    return static_cast<std::uint64_t>(found.st_size);
}

bool CInputFile::isStillAt(const std::string& name) const {
    struct stat now {};
    if (stat(name.c_str(), &now) != 0 || now.st_dev != found.st_dev || now.st_ino != found.st_ino)
        return false;
    // The times of a pipe say nothing of what came through it.
    return !S_ISREG(found.st_mode) ||
           (now.st_size == found.st_size && now.st_mtim.tv_sec == found.st_mtim.tv_sec &&
            now.st_mtim.tv_nsec == found.st_mtim.tv_nsec);
}

Buffer CInputFile::readAll(std::uint64_t mostBytes) {
    const std::uint64_t announced = announcedBytes().value_or(0);
    if (announced > mostBytes) refuseLength(mostBytes);
    // That was all: a terminal would have to be told once more.
    if (begin.sizeBytes < kHeadBytes) return enlarged(begin, begin.sizeBytes);
    // One byte more than announced, so that the end shows.
    Buffer buffer = enlarged(begin, std::max<std::uint64_t>(announced + 1, kFirstBytes));
    std::size_t present = readUpTo(file, buffer, begin.sizeBytes);
    while (present == buffer.sizeBytes && present <= mostBytes) {
        buffer = enlarged(buffer, 2 * buffer.sizeBytes);
        present = readUpTo(file, buffer, present);
    }
    if (present > mostBytes) refuseLength(mostBytes);
    buffer.sizeBytes = present;
    return buffer;
}

std::optional<Buffer> readHead(const std::string& name, std::size_t count) {
    try {
        return readBegin(openInput(name), count);
    } catch (const Refusal&) {
        return std::nullopt;
    }
}

}  // namespace qmx
