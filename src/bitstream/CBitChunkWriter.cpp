#include "bitstream/CBitChunkWriter.h"

#include <algorithm>

namespace qmx {

CBitChunkWriter::CBitChunkWriter() : CBitWriter(nullptr, 0) {
    buffer = reinterpret_cast<unsigned char*>(&inlineWord);
}

void CBitChunkWriter::appendChunk() {
    if (current == nullptr) {
        chunks = makeObject<CMemChunk<std::uint64_t>>(memory, kChunkWords, memory);
        current = chunks.get();
    } else {
        current = current->append();
    }
}

void CBitChunkWriter::flushBuffer() {
    try {
        appendChunk();
    } catch (...) {
        stepBitBack();
        throw;
    }
    bitsInChunks += static_cast<std::uint64_t>(bufferWords) * kWordBits;
    bufferWords = current->words;
    buffer = reinterpret_cast<unsigned char*>(current->data.get());
}

std::uint64_t CBitChunkWriter::writeBitsTo(CBitWriter* destination, std::uint64_t nbits) {
    const std::uint64_t total = getTotal();
    const std::uint64_t wanted = nbits == 0 ? total : std::min(nbits, total);
    flush();
    std::uint64_t left = wanted;
    for (const auto* chunk = chunks.get(); chunk != nullptr && left != 0;
         chunk = chunk->next.get()) {
        const std::uint64_t held = static_cast<std::uint64_t>(chunk->words) * kWordBits;
        const std::uint64_t step = std::min(held, left);
        destination->writeWords(chunk->data.get(), step);
        left -= step;
    }
    return wanted - left;
}

}  // namespace qmx
