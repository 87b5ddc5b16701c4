#pragma once

#include "bitstream/CBitFileReader.h"
#include "coding/syntax/CSectionWalk.h"
#include "container/FileIo.h"
#include "container/TKHeader.h"
#include "trailer/IPlacedBytes.h"

namespace qmx {

/// A file that may hold a stream, open for reading: what its header says, and its bits any number of
/// times. It is never read into memory as a whole.
class CStreamFile final : public IPlacedBytes {
public:
    /// Opens a file, or the standard input for "-"; what cannot seek is copied to a temporary file if
    /// it begins as a stream. Throws: FileError.
    explicit CStreamFile(const char* name);

    /// Whether the file has a header of 16 bytes with the right first four.
    bool hasHeader() const { return headerBytes == sizeof header && header.isRecognised(); }
    const TKHeader& getHeader() const { return header; }
    /// Bytes that the file holds, those of the header included. Without a header, no more than that
    /// was looked at.
    std::uint64_t sizeBytes() const override { return totalBytes; }
    std::uint64_t dataBits() const { return 8 * (totalBytes - sizeof header); }
    /// Returns: a reader that stands behind the header. Requires: hasHeader; one reader at a time.
    CBitFileReader bits() const;
    /// Places count from the first byte of the header. Requires: hasHeader; no reader of bits is used
    /// any more. Throws: FileError, also when the file has become shorter.
    void read(std::uint64_t offset, std::span<unsigned char> to) const override;
    /// Throws: FileError when something could not be read.
    void checkReads() const;

private:
    FilePtr file;
    TKHeader header{};
    std::size_t headerBytes = 0;
    std::uint64_t totalBytes = 0;
    /// Where the data behind the header begins in the file.
    std::int64_t dataStartBytes = 0;
};

/// Returns: what a stream with this header may have as sections.
SectionBounds sectionBoundsOf(const TKHeader& header);

}  // namespace qmx
