#include "bitstream/CBitInfiniteReader.h"

#include <algorithm>

#include "bitstream/CBitFileReader.h"
#include "bitstream/CBitFileWriter.h"

namespace qmx {

void CBitInfiniteReader::create(CBitReader* source, std::uint64_t lengthBits) {
    CBitReader::create(source, lengthBits);
    next = {};
    // A source that reads a file will move its window; only what it has loaded can be shared.
    const FilePosition place = source->filePosition();
    if (place.file != nullptr) moveTo(place);
}

void CBitInfiniteReader::moveTo(const FilePosition& place) {
    next = place;
    buffer = nullptr;
    bufferWords = 0;
    tailBytes = 0;
    cursor = 0;
}

FilePosition CBitInfiniteReader::filePosition() const {
    if (next.file == nullptr) return {};
    const std::int64_t windowBytes = bufferWords * kWordBytes + tailBytes;
    return {next.file, next.offsetBytes - windowBytes + cursor * kWordBytes};
}

void CBitInfiniteReader::skip(std::uint64_t nbits) {
    const FilePosition place = filePosition();
    if (place.file == nullptr || nbits <= kWordBits) {
        CBitReader::skip(nbits);
        return;
    }
    const int unread = std::max(bitLength(accumulator) - 1, 0);
    // As in CBitFileReader, the last skipped bit is read.
    const std::uint64_t lastBit = nbits - static_cast<std::uint64_t>(unread) - 1;
    const auto words = static_cast<std::int64_t>(lastBit / kWordBits);
    moveTo({place.file, place.offsetBytes + words * kWordBytes});
    accumulator = 1;
    CBitReader::skip(lastBit % kWordBits + 1);
}

bool CBitInfiniteReader::fetchWindow() {
    if (next.file == nullptr) return false;
    if (!window) window = std::make_unique_for_overwrite<unsigned char[]>(kFileBufferBytes);
    const std::size_t bytes = readFileAt(next, window.get(), kFileBufferBytes);
    next.offsetBytes += static_cast<std::int64_t>(bytes);
    buffer = window.get();
    bufferWords = static_cast<std::int64_t>(bytes / kWordBytes);
    tailBytes = static_cast<std::uint32_t>(bytes % kWordBytes);
    cursor = 0;
    return bytes != 0;
}

void CBitInfiniteReader::fetch() {
    if (fetchWindow()) return;
    next = {};
    buffer = reinterpret_cast<const unsigned char*>(kZeroBuffer.data());
    bufferWords = static_cast<std::int64_t>(kZeroBuffer.size());
    tailBytes = 0;
    cursor = 0;
}

}  // namespace qmx
