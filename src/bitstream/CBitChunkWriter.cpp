#include "bitstream/CBitChunkWriter.h"

#include <algorithm>

namespace qmx {

CBitChunkWriter::CBitChunkWriter() : CBitWriter(nullptr, 0) {
    buffer = reinterpret_cast<unsigned char*>(&inlineWord);
}

void CBitChunkWriter::flushBuffer() {
    const MemChunk* last = chunks.last();
    try {
        chunks.append(last == nullptr ? kFirstChunkWords
                                      : std::min(2 * last->words, kMostChunkWords));
    } catch (...) {
        stepBitBack();
        throw;
    }
    bitsInChunks += static_cast<std::uint64_t>(bufferWords) * kWordBits;
    bufferWords = chunks.last()->words;
    buffer = reinterpret_cast<unsigned char*>(chunks.last()->data());
}

std::uint64_t CBitChunkWriter::writeBitsTo(CBitWriter* destination, std::uint64_t nbits) {
    const std::uint64_t total = getTotal();
    const std::uint64_t wanted = nbits == 0 ? total : std::min(nbits, total);
    flush();
    std::uint64_t left = wanted;
    for (MemChunk* chunk = chunks.first(); chunk != nullptr && left != 0; chunk = chunk->next) {
        const std::uint64_t held = static_cast<std::uint64_t>(chunk->words) * kWordBits;
        const std::uint64_t step = std::min(held, left);
        destination->writeWords(chunk->data(), step);
        left -= step;
    }
    return wanted - left;
}

}  // namespace qmx
