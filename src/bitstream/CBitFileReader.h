#pragma once

#include <cstdio>
#include <memory>

#include "bitstream/CBitReader.h"

namespace qmx {

/// Reads up to sizeBytes bytes that stand at an offset of a file that can seek.
/// Returns: the number of bytes read, 0 at the end of the file or after an error.
std::size_t readFileAt(const FilePosition& place, unsigned char* bytes, std::size_t sizeBytes);

/// A reader whose buffer is a window of 4096 bytes on a file. It remembers its own place in the
/// file, so other readers may use the same file in between.
class CBitFileReader final : public CBitReader {
public:
    /// Requires: inputFile is open for reading, can seek, and stands at the stream's first byte.
    /// Nothing is read yet. Owns: the file only if closesFile, and not when it throws.
    /// Throws: std::bad_alloc.
    explicit CBitFileReader(std::FILE* inputFile, bool closesFile = false);
    ~CBitFileReader() override;

    const char* getType() const override { return "file"; }
    std::uint64_t getTotal() const override { return bitsBefore + CBitReader::getTotal(); }
    void fetch() override;
    /// Seeks instead of reading what is skipped.
    void skip(std::uint64_t nbits) override;
    FilePosition filePosition() const override;

private:
    std::unique_ptr<unsigned char[]> window;
    std::FILE* file;
    /// Bits of the stream before the window.
    std::uint64_t bitsBefore = 0;
    bool closeFile;
    std::size_t capacity;
    /// Offset of the stream's first byte in the file.
    std::int64_t streamStartBytes;
};

}  // namespace qmx
