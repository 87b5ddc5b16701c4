#include "bitstream/CBitInfiniteReader.h"

#include "bitstream/CBitFileReader.h"
#include "bitstream/CBitFileWriter.h"

namespace qmx {

void CBitInfiniteReader::create(CBitReader* source, std::uint64_t lengthBits) {
    CBitReader::create(source, lengthBits);
    next = source->filePosition();
    if (next.file == nullptr) return;
    // The source will move its window; only what it has already loaded can be shared.
    buffer = nullptr;
    bufferWords = 0;
    tailBytes = 0;
    cursor = 0;
}

void CBitInfiniteReader::reset() {
    CBitReader noData(nullptr, 0);
    CBitReader::create(&noData, 0);
    next = {};
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
    if (!infinite) CBitReader::fetch();
    next = {};
    buffer = reinterpret_cast<const unsigned char*>(zeroBuffer.data());
    bufferWords = static_cast<std::int64_t>(zeroBuffer.size());
    tailBytes = 0;
    cursor = 0;
}

}  // namespace qmx
