#pragma once

#include <cstdio>
#include <memory>

#include "bitstream/CBitWriter.h"

namespace qmx {

/// Bytes that a file stream holds in memory at a time. Implementation limit, not part of a stream.
inline constexpr std::size_t kFileBufferBytes = 4096;

/// A writer that hands each full buffer to a file; the destructor hands over the rest, so the file
/// receives exactly the bytes that hold the bits written.
class CBitFileWriter final : public CBitWriter {
public:
    /// Requires: outputFile, unless null, is open for writing while the writer lives.
    /// Owns: the file only if closesFile, and not when it throws. Throws: std::bad_alloc.
    explicit CBitFileWriter(std::FILE* outputFile, bool closesFile = false);
    /// A failed write, or a close that fails, throws 5 out of this destructor and so ends the process: there
    /// is nobody left who could be told that the stream is incomplete.
    ~CBitFileWriter() override;

    const char* getType() const override { return "file"; }
    std::uint64_t getTotal() const override { return bitsFlushed + CBitWriter::getTotal(); }
    /// Throws: 5 when the file is null or does not take the whole buffer; bits written after that are
    /// lost.
    void flushBuffer() override;

private:
    explicit CBitFileWriter(std::unique_ptr<unsigned char[]> space, std::FILE* outputFile,
                            bool closesFile);
    void writeRest();
    void writeToFile(std::size_t sizeBytes);

    std::unique_ptr<unsigned char[]> storage;
    std::FILE* file;
    std::uint64_t bitsFlushed = 0;
    bool closeFile;
};

}  // namespace qmx
