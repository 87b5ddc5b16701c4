#include "bitstream/CReflectedCrc.h"

#include <array>

#include "bitstream/WordBytes.h"

namespace qmx {
namespace {

constexpr std::size_t kStepWords = 2;
constexpr std::size_t kStepBytes = kStepWords * kWordBytes;

template <class Word>
using Table = std::array<Word, 256>;

/// Returns: table[n][b], the check of byte b with n zero bytes behind it.
template <class Word, Word kPolynomial>
constexpr std::array<Table<Word>, kStepBytes> makeTables() {
    std::array<Table<Word>, kStepBytes> tables{};
    for (std::size_t b = 0; b < 256; ++b) {
        Word rest = static_cast<Word>(b);
        for (int bit = 0; bit < 8; ++bit)
            rest = (rest >> 1) ^ ((rest & 1) != 0 ? kPolynomial : 0);
        tables[0][b] = rest;
    }
    for (std::size_t n = 1; n < kStepBytes; ++n)
        for (std::size_t b = 0; b < 256; ++b) {
            const Word before = tables[n - 1][b];
            tables[n][b] = (before >> 8) ^ tables[0][before & 0xFF];
        }
    return tables;
}

template <class Word, Word kPolynomial>
constexpr std::array<Table<Word>, kStepBytes> kTables = makeTables<Word, kPolynomial>();

/// Plain way: byte after byte through table 0, each waiting for the one before it. Here 16 bytes are
/// looked up at once: the check is linear, so that of a step is the sum of those of its bytes. On a Xeon
/// of 2.1 GHz it takes 0.4 ns per byte of either width, 8 bytes at once take 0.6. 32 take 0.35, but twice
/// the tables.
template <class Word, Word kPolynomial>
Word addStep(Word state, const unsigned char* bytes) {
    Word next = 0;
    for (std::size_t w = 0; w < kStepWords; ++w) {
        const std::uint64_t word = loadWord(bytes + w * kWordBytes) ^ (w == 0 ? state : 0);
        for (std::size_t n = 0; n < kWordBytes; ++n)
            next ^= kTables<Word, kPolynomial>[kStepBytes - 1 - w * kWordBytes - n]
                                              [(word >> (8 * n)) & 0xFF];
    }
    return next;
}

}  // namespace

template <class Word, Word kPolynomial>
void CReflectedCrc<Word, kPolynomial>::add(const unsigned char* bytes, std::size_t sizeBytes) {
    std::size_t i = 0;
    for (; i + kStepBytes <= sizeBytes; i += kStepBytes)
        state = addStep<Word, kPolynomial>(state, bytes + i);
    for (; i < sizeBytes; ++i)
        state = (state >> 8) ^ kTables<Word, kPolynomial>[0][(state ^ bytes[i]) & 0xFF];
}

template class CReflectedCrc<std::uint32_t, 0xEDB88320>;
template class CReflectedCrc<std::uint64_t, 0xC96C5795D7870F42>;

}  // namespace qmx
