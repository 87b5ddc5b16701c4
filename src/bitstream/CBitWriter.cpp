#include "bitstream/CBitWriter.h"

#include <algorithm>
#include <cassert>

#include "bitstream/Throwing.h"

namespace qmx {

CBitWriter::CBitWriter(void* data, std::size_t sizeBytes)
    : buffer(static_cast<unsigned char*>(data)),
      bufferWords(static_cast<std::int64_t>(sizeBytes / kWordBytes)),
      tailBytes(static_cast<std::uint32_t>(sizeBytes % kWordBytes)) {
    if (bufferWords == 0) endMask = tailEndMask();
}

std::uint64_t CBitWriter::getTotal() const {
    // Unsigned on purpose: a mask that was shifted out counts as one bit less than none.
    const std::uint64_t pending =
        bitMask == 0 ? ~std::uint64_t{0} : static_cast<std::uint64_t>(std::countr_zero(bitMask));
    const std::uint64_t beyondTail = cursor > bufferWords ? kWordBits - 8 * tailBytes : 0;
    return static_cast<std::uint64_t>(cursor) * kWordBits + pending - beyondTail;
}

void CBitWriter::flushBuffer() {
    stepBitBack();
    throwEndOfStream();
}

void CBitWriter::setSize(std::uint64_t) {}

void CBitWriter::flush() {
    if (cursor < bufferWords) {
        storeWord(buffer + cursor * kWordBytes, accumulator);
    } else if (cursor == bufferWords && tailBytes != 0) {
        std::memcpy(buffer + cursor * kWordBytes, &accumulator, tailBytes);
    }
}

bool CBitWriter::checkFlushBuffer() {
    if (cursor + 1 == bufferWords) {
        endMask = tailEndMask();
        return false;
    }
    const bool surplusBitIsAlone = endMask == 2;
    if (!surplusBitIsAlone) {
        flush();
        ++cursor;
        accumulator >>= 8 * tailBytes;
        bitMask = 2;
    }
    flushBuffer();
    cursor = 0;
    endMask = bufferWords == 0 ? tailEndMask() : 0;
    return true;
}

void CBitWriter::storeAccumulator() {
    storeWord(buffer + cursor * kWordBytes, accumulator);
    ++cursor;
}

void CBitWriter::completeWord() {
    if (cursor + 1 >= bufferWords && checkFlushBuffer()) return;
    storeAccumulator();
    bitMask = 1;
    accumulator = 0;
}

void CBitWriter::writeAcross(std::uint64_t value, int nbits) {
    // Plain way: one bit after the other, with the boundary test at the end of each word. Where the
    // word that is completed is followed by another whole word, that test only stores the word, so
    // the part of value that fits can go in at once and the rest starts the next word.
    if (endMask == 0 && cursor + 1 < bufferWords) {
        assert(bitMask != 0);
        const int filled = std::countr_zero(bitMask);
        accumulator |= value << filled;
        storeAccumulator();
        accumulator = filled == 0 ? 0 : value >> (kWordBits - filled);
        bitMask = std::uint64_t{1} << (filled + nbits - kWordBits);
        return;
    }
    for (; nbits > 0; --nbits, value >>= 1)
        writeBit(value & 1);
}

void CBitWriter::mergeWords(const std::uint64_t* words, std::int64_t count) {
    const int filled = std::countr_zero(bitMask);
    unsigned char* to = buffer + cursor * kWordBytes;
    std::uint64_t carried = accumulator;
    for (std::int64_t i = 0; i < count; ++i) {
        storeWord(to + i * kWordBytes, carried | words[i] << filled);
        carried = words[i] >> 1 >> (kWordBits - 1 - filled);
    }
    accumulator = carried;
    cursor += count;
}

void CBitWriter::writeWords(const std::uint64_t* words, std::uint64_t totalBits) {
    // Plain way: writeInt on each word. Where whole words follow, each of them only shifts its
    // argument into place, so the test for room is made once for all words that surely fit.
    std::int64_t left = static_cast<std::int64_t>(totalBits / kWordBits);
    while (left > 0) {
        std::int64_t count = std::min(left, endMask == 0 ? bufferWords - 1 - cursor : 0);
        if (count > 0) {
            mergeWords(words, count);
        } else {
            count = 1;
            writeInt(*words, kWordBits);
        }
        words += count;
        left -= count;
    }
    const int rest = static_cast<int>(totalBits % kWordBits);
    if (rest != 0) writeInt(*words, rest);
}

}  // namespace qmx
