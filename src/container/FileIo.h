#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <memory>
#include <optional>

namespace qmx {

struct FileCloser {
    void operator()(std::FILE* file) const noexcept { std::fclose(file); }
};

/// Owns: an open file.
using FilePtr = std::unique_ptr<std::FILE, FileCloser>;

/// The part that a file plays in a job; the caller knows its name.
enum class FileRole { input, output, temporary };

/// A file could not be read or written for a reason that the operating system gave.
struct FileError {
    FileRole role;
    int errorNumber;
};

/// Writes all bytes to an output or temporary file. Throws: FileError.
void writeAll(std::FILE* file, FileRole role, const void* bytes, std::size_t sizeBytes);

/// Reads up to sizeBytes bytes of the input. Returns: how many came before its end. Throws:
/// FileError for any other reason to stop.
std::size_t readUpTo(std::FILE* file, void* bytes, std::size_t sizeBytes);

/// Returns: the bytes of a regular file from where it stands to its end; nothing for other files,
/// whose length nobody knows.
std::optional<std::uint64_t> bytesLeft(std::FILE* file);

/// Returns: where a file stands that can be read again from there, -1 for others.
std::int64_t placeToReturn(std::FILE* file);
/// Requires: place came from placeToReturn. Throws: FileError about the input.
void returnTo(std::FILE* file, std::int64_t place);

/// Bytes of a file in memory.
struct FileBytes {
    std::unique_ptr<unsigned char[]> bytes;
    std::size_t sizeBytes = 0;
};

/// Reads the input from where it stands to its end. Returns: its bytes. Throws: FileError, also when
/// there is no memory for them.
FileBytes readRest(std::FILE* file);

/// Hands everything written to the operating system and closes the output file, which is closed
/// also when this throws: errors of earlier writes may show only here. Throws: FileError.
void closeOutput(FilePtr file);

/// Returns: the rest of a file that cannot seek, copied behind prefixBytes bytes of prefix into a
/// temporary file that stands at the same place. A file that can seek comes back as it is.
/// Throws: FileError.
FilePtr makeSeekable(FilePtr file, const void* prefix, std::size_t prefixBytes);

}  // namespace qmx
