#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <sys/stat.h>

#include "convert/Buffer.h"
#include "convert/CFileNumber.h"

namespace qmx {

/// A file, or the standard input for "-", that is read in two steps: its first bytes say whether the rest is wanted.
class CInputFile {
public:
    /// Enough for every format to be known by.
    static constexpr std::size_t kHeadBytes = 256;

    /// Reads the first bytes. Throws: Refusal where that cannot be done.
    explicit CInputFile(const std::string& name);

    /// Returns: fewer than kHeadBytes where the file has no more.
    ByteView head() const { return begin.view(); }
    /// Returns: the bytes that the file says it has, nothing where it does not say.
    std::optional<std::uint64_t> announcedBytes() const;
    /// What the system said of the file before it was read.
    const struct stat& facts() const { return found; }
    /// Whether a name leads to the file that was read, as it was then.
    bool isStillAt(const std::string& name) const;
    /// Reads the rest. Returns: all bytes of the file. Throws: Refusal where it cannot be read or has more than
    /// mostBytes; std::bad_alloc. Requires: it is called once.
    Buffer readAll(std::uint64_t mostBytes);

private:
    CFileNumber file;
    struct stat found {};
    Buffer begin;
};

/// Reads up to count first bytes. Returns: fewer where there are fewer, nothing where the file cannot be read.
std::optional<Buffer> readHead(const std::string& name, std::size_t count);

}  // namespace qmx
