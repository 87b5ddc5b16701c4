#include "bitstream/CBitFileReader.h"

#include <algorithm>

#include "bitstream/CBitFileWriter.h"
#include "bitstream/Throwing.h"

namespace qmx {

std::size_t readFileAt(const FilePosition& place, unsigned char* bytes, std::size_t sizeBytes) {
    if (fseeko(place.file, place.offsetBytes, SEEK_SET) != 0) return 0;
    return std::fread(bytes, 1, sizeBytes, place.file);
}

CBitFileReader::CBitFileReader(std::FILE* inputFile, bool closesFile)
    : CBitReader(nullptr, 0),
      window(std::make_unique<unsigned char[]>(kFileBufferBytes)),
      file(inputFile),
      closeFile(closesFile),
      capacity(kFileBufferBytes),
      streamStartBytes(ftello(inputFile)) {
    buffer = window.get();
}

CBitFileReader::~CBitFileReader() {
    if (closeFile && file != nullptr) std::fclose(file);
}

FilePosition CBitFileReader::filePosition() const {
    const std::int64_t wordsBefore = static_cast<std::int64_t>(bitsBefore / kWordBits) + cursor;
    return {file, streamStartBytes + wordsBefore * kWordBytes};
}

void CBitFileReader::fetch() {
    // Only the last window has a tail; behind it there is nothing to ask for.
    const std::size_t bytes = endsInTail() ? 0 : readFileAt(filePosition(), window.get(), capacity);
    if (bytes == 0) throwEndOfStream();
    bitsBefore += static_cast<std::uint64_t>(bufferWords) * kWordBits;
    buffer = window.get();  // create may have pointed it at the data of another reader
    bufferWords = static_cast<std::int64_t>(bytes / kWordBytes);
    tailBytes = static_cast<std::uint32_t>(bytes % kWordBytes);
    cursor = 0;
}

void CBitFileReader::skip(std::uint64_t nbits) {
    const std::uint64_t consumed = getTotal();
    nbits = std::min(nbits, ~consumed);
    const std::uint64_t windowEnd =
        bitsBefore + static_cast<std::uint64_t>(bufferWords) * kWordBits;
    if (nbits <= kWordBits || endsInTail() || consumed + nbits <= windowEnd) {
        CBitReader::skip(nbits);
        return;
    }
    // The window moves to the word that holds the last skipped bit, and that bit is read: skipping
    // to the very end of the data succeeds, one bit further fails, as in memory.
    const std::uint64_t lastBit = consumed + nbits - 1;
    bitsBefore = lastBit / kWordBits * kWordBits;
    bufferWords = 0;
    cursor = 0;
    accumulator = 1;
    CBitReader::skip(lastBit % kWordBits + 1);
}

}  // namespace qmx
