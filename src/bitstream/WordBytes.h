#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

namespace qmx {

/// Bits and bytes of one word of a bit stream. Format: docs/format.md, 4 Bit order.
inline constexpr int kWordBits = 64;
inline constexpr int kWordBytes = 8;

static_assert(std::endian::native == std::endian::little,
              "words are copied to and from the stream as they stand in memory");
#ifndef __wasm32__
static_assert(sizeof(void*) == 8, "of processors with less than 64 bits, there is only wasm32");
#endif

// Memory of callers may stand at any address, so words go through memcpy, which compiles to one
// unaligned move.

/// Returns: the 64-bit word at a byte address of any alignment.
inline std::uint64_t loadWord(const unsigned char* bytes) {
    std::uint64_t word;
    std::memcpy(&word, bytes, sizeof word);
    return word;
}

/// Stores word at a byte address of any alignment.
inline void storeWord(unsigned char* bytes, std::uint64_t word) {
    std::memcpy(bytes, &word, sizeof word);
}

/// Returns: the 32-bit number at a byte address of any alignment, as headers and trailers hold them.
inline std::uint32_t loadNumber(const unsigned char* bytes) {
    std::uint32_t number;
    std::memcpy(&number, bytes, sizeof number);
    return number;
}

/// Stores a 32-bit number at a byte address of any alignment.
inline void storeNumber(unsigned char* bytes, std::uint32_t number) {
    std::memcpy(bytes, &number, sizeof number);
}

/// Returns: a word whose nbits low bits are set. Requires: 0 <= nbits < 64.
constexpr std::uint64_t lowBits(int nbits) {
    return (std::uint64_t{1} << nbits) - 1;
}

/// Returns: the number of bits of value without leading zeros; 0 for 0.
constexpr int bitLength(std::uint64_t value) {
    return kWordBits - std::countl_zero(value);
}

}  // namespace qmx
