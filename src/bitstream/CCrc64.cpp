#include "bitstream/CCrc64.h"

#include <array>

#include "bitstream/WordBytes.h"

namespace qmx {
namespace {

constexpr std::uint64_t kPolynomial = 0xC96C5795D7870F42;
constexpr std::size_t kStepBytes = kWordBytes;

using Table = std::array<std::uint64_t, 256>;

/// Returns: table[n][b], the check of byte b with n zero bytes behind it.
constexpr std::array<Table, kStepBytes> makeTables() {
    std::array<Table, kStepBytes> tables{};
    for (std::size_t b = 0; b < 256; ++b) {
        std::uint64_t rest = b;
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest >> 1) ^ ((rest & 1) != 0 ? kPolynomial : 0);
        tables[0][b] = rest;
    }
    for (std::size_t n = 1; n < kStepBytes; ++n)
        for (std::size_t b = 0; b < 256; ++b) {
            const std::uint64_t before = tables[n - 1][b];
            tables[n][b] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    return tables;
}

constexpr std::array<Table, kStepBytes> kTables = makeTables();

/// Plain way: byte after byte through table 0, each waiting for the one before it. Here eight bytes are
/// looked up at once: the check is linear, so that of a word is the sum of those of its bytes.
std::uint64_t addWord(std::uint64_t state, const unsigned char* bytes) {
    const std::uint64_t word = loadWord(bytes) ^ state;
    std::uint64_t next = 0;
    for (std::size_t n = 0; n < kStepBytes; ++n)
        next ^= kTables[kStepBytes - 1 - n][(word >> (8 * n)) & 0xFF];
    return next;
}

}  // namespace

void CCrc64::add(const unsigned char* bytes, std::size_t sizeBytes) {
    std::size_t i = 0;
    for (; i + kStepBytes <= sizeBytes; i += kStepBytes)
        state = addWord(state, bytes + i);
    for (; i < sizeBytes; ++i)
        state = (state >> 8) ^ kTables[0][(state ^ bytes[i]) & 0xFF];
}

}  // namespace qmx
