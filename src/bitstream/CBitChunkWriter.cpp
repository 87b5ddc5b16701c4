#include "bitstream/CBitChunkWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace qmx {

CBitChunkWriter::CBitChunkWriter() : CBitWriter(nullptr, 0) {
    buffer = reinterpret_cast<unsigned char*>(&inlineWord);
}

void CBitChunkWriter::appendChunk() {
    const MemChunk* last = chunks.last();
    chunks.append(last == nullptr ? firstWords : std::min(2 * last->words, kMostChunkWords));
}

void CBitChunkWriter::flushBuffer() {
    try {
        appendChunk();
    } catch (...) {
        stepBitBack();
        throw;
    }
    enterChunk();
}

void CBitChunkWriter::enterChunk() {
    bitsInChunks += static_cast<std::uint64_t>(bufferWords) * kWordBits;
    bufferWords = chunks.last()->words;
    buffer = reinterpret_cast<unsigned char*>(chunks.last()->data());
}

void CBitChunkWriter::standAt(std::int64_t word) {
    cursor = word;
    accumulator = 0;
    bitMask = 1;
    endMask = cursor == bufferWords ? tailEndMask() : 0;
}

BitBatch CBitChunkWriter::beginBatch() {
    return {buffer + cursor * kWordBytes, buffer + bufferWords * kWordBytes, accumulator,
            static_cast<std::uint64_t>(std::countr_zero(bitMask))};
}

void CBitChunkWriter::moveSurplus(unsigned char*& at, unsigned char*& end) {
    const unsigned char* const surplus = end;
    const std::ptrdiff_t surplusBytes = at - end;
    standAt(bufferWords);
    appendChunk();
    enterChunk();
    std::memcpy(buffer, surplus, static_cast<std::size_t>(surplusBytes));
    at = buffer + surplusBytes;
    end = buffer + bufferWords * kWordBytes;
}

void CBitChunkWriter::endBatch(BitBatch batch) {
    const bool endsAtTheEnd = batch.at == batch.end && batch.pending == 0;
    if (batch.isFull() && !endsAtTheEnd) makeRoom(batch);
    standAt((batch.at - buffer) / kWordBytes);
    accumulator = batch.accumulator;
    bitMask = std::uint64_t{1} << batch.pending;
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
