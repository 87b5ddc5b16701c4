#include "bitstream/CBitReader.h"

#include <algorithm>

#include "bitstream/Throwing.h"

namespace qmx {

CBitReader::CBitReader(const void* data, std::size_t sizeBytes)
    : buffer(static_cast<const unsigned char*>(data)),
      bufferWords(static_cast<std::int64_t>(sizeBytes / kWordBytes)),
      tailBytes(static_cast<std::uint32_t>(sizeBytes % kWordBytes)) {}

std::uint64_t CBitReader::getTotal() const {
    // Unsigned on purpose: without a sentinel this counts one bit more than was consumed.
    const std::uint64_t unread = static_cast<std::uint64_t>(bitLength(accumulator)) - 1;
    const std::uint64_t beyondTail = cursor > bufferWords ? kWordBits - 8 * tailBytes : 0;
    return static_cast<std::uint64_t>(cursor) * kWordBits - unread - beyondTail;
}

BitSpan CBitReader::loadedBits() const {
    const auto unread = static_cast<std::int64_t>(std::max(bitLength(accumulator) - 1, 0));
    const std::int64_t next = cursor * kWordBits - unread;
    const std::int64_t end = bufferWords * kWordBits;
    // The accumulator may hold bits from before the buffer, or from the tail behind its words.
    if (next < 0 || next >= end) return {buffer, 0, 0};
    return {buffer, static_cast<std::uint64_t>(next), static_cast<std::uint64_t>(end)};
}

void CBitReader::goOnAt(std::uint64_t bit) {
    cursor = static_cast<std::int64_t>(bit / kWordBits);
    accumulator = 1;
    const int consumed = static_cast<int>(bit % kWordBits);
    if (consumed == 0) return;
    const std::uint64_t word = loadWord(buffer + cursor * kWordBytes);
    ++cursor;
    accumulator = (word >> consumed) | (std::uint64_t{1} << (kWordBits - consumed));
}

void CBitReader::fetch() {
    throwEndOfStream();
}

void CBitReader::create(CBitReader* source, std::uint64_t) {
    buffer = source->buffer;
    bufferWords = source->bufferWords;
    tailBytes = source->tailBytes;
    cursor = source->cursor;
    accumulator = source->accumulator;
}

void CBitReader::skip(std::uint64_t nbits) {
    const BitSpan loaded = loadedBits();
    if (nbits < loaded.end - loaded.next) return goOnAt(loaded.next + nbits);
    // Whole words are passed over at once, all but one: the unread part of the current word and
    // the last word go through the accumulator. Lengths come from the stream, so the index must
    // not run away; every place behind the tail answers alike.
    if (nbits >= kWordBits) {
        const std::uint64_t words = nbits / kWordBits - 1;
        const std::int64_t left = std::max<std::int64_t>(bufferWords + 1 - cursor, 0);
        cursor += static_cast<std::int64_t>(
            std::min<std::uint64_t>(words, static_cast<std::uint64_t>(left)));
        nbits -= words * kWordBits;
    }
    for (; nbits >= kWordBits; nbits -= kWordBits / 2)
        readInt(kWordBits / 2);
    readInt(static_cast<int>(nbits));
}

int CBitReader::fetchAccumulator() {
    while (cursor >= bufferWords) {
        if (cursor == bufferWords && endsInTail()) {
            std::uint64_t tail = 0;
            std::memcpy(&tail, buffer + cursor * kWordBytes, tailBytes);
            ++cursor;
            accumulator = (tail >> 1) | (std::uint64_t{1} << (8 * tailBytes - 1));
            return static_cast<int>(tail & 1);
        }
        fetch();
    }
    const std::uint64_t word = loadWord(buffer + cursor * kWordBytes);
    ++cursor;
    accumulator = (word >> 1) | (std::uint64_t{1} << (kWordBits - 1));
    return static_cast<int>(word & 1);
}

std::uint64_t CBitReader::nextWordFirstBit() {
    accumulator = 0;  // the sentinel counts as consumed when no data comes
    return static_cast<std::uint64_t>(fetchAccumulator());
}

std::uint64_t CBitReader::readAcross(int nbits) {
    std::uint64_t value = 0;
    int taken = 0;
    while (taken < nbits) {
        const int unread = bitLength(accumulator) - 1;
        if (unread <= 0) {
            value |= nextWordFirstBit() << taken++;
            continue;
        }
        const int step = std::min(unread, nbits - taken);
        value |= (accumulator & lowBits(step)) << taken;
        accumulator >>= step;
        taken += step;
    }
    return value;
}

int CBitReader::countZeros(int limit) {
    int zeros = 0;
    while (zeros < limit) {
        if (accumulator <= 1) {
            if (nextWordFirstBit() != 0) return zeros;
            ++zeros;
            continue;
        }
        const int run = std::countr_zero(accumulator);
        const int step = std::min(run, limit - zeros);
        accumulator >>= step;
        zeros += step;
        const bool atOneBit = zeros < limit && accumulator != 1;
        if (atOneBit) {
            accumulator >>= 1;
            return zeros;
        }
    }
    return zeros;
}

}  // namespace qmx
