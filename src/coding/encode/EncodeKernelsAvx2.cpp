#include <algorithm>
#include <bit>
#include <immintrin.h>

#include "coding/encode/EncodeKernels.h"
#include "coding/encode/WindowCodes.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

/// The same number of bits in each byte of `low` and `high`, for values 0 to 31 and 32 to 63.
struct ByteHalves {
    __m256i low;
    __m256i high;
};

/// The four registers hold 64 values of 16 bits.
struct Words {
    __m256i at[4];
};

QMX_TARGET inline std::uint64_t topBits(const ByteHalves& bytes) {
    const auto low = static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes.low));
    const auto high = static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes.high));
    return low | std::uint64_t{high} << 32;
}

/// Returns: the low bytes of 32 values. The pack works on each 128-bit half by itself:
/// a0 b0 a1 b1, in quarters, comes out for a and b, and the permutation makes it a0 a1 b0 b1.
QMX_TARGET inline __m256i packBytes(__m256i a, __m256i b) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi16(a, b), 0xD8);
}

QMX_TARGET inline ByteHalves lowBytes(const Words& words) {
    const __m256i mask = _mm256_set1_epi16(0xFF);
    return {packBytes(_mm256_and_si256(words.at[0], mask), _mm256_and_si256(words.at[1], mask)),
            packBytes(_mm256_and_si256(words.at[2], mask), _mm256_and_si256(words.at[3], mask))};
}

QMX_TARGET inline ByteHalves highBytes(const Words& words) {
    return {packBytes(_mm256_srli_epi16(words.at[0], 8), _mm256_srli_epi16(words.at[1], 8)),
            packBytes(_mm256_srli_epi16(words.at[2], 8), _mm256_srli_epi16(words.at[3], 8))};
}

/// Stores the bits 0 to count - 1 of 64 bytes. movemask takes the top bit of each byte, so the bit
/// that is wanted is shifted there; bits that cross into the next byte never get that far.
QMX_TARGET inline void sliceBytes(const ByteHalves& bytes, int count, std::uint64_t* bits) {
    const __m128i start = _mm_cvtsi32_si128(8 - count);
    ByteHalves shifted{_mm256_sll_epi16(bytes.low, start), _mm256_sll_epi16(bytes.high, start)};
    for (int i = count - 1; i >= 0; --i) {
        bits[i] = topBits(shifted);
        shifted = {_mm256_add_epi8(shifted.low, shifted.low),
                   _mm256_add_epi8(shifted.high, shifted.high)};
    }
}

/// Stores the bits 0 to count - 1 of 64 values of 16 bits.
QMX_TARGET inline void sliceWords(const Words& words, int count, std::uint64_t* bits) {
    sliceBytes(lowBytes(words), count < 8 ? count : 8, bits);
    if (count > 8) sliceBytes(highBytes(words), count - 8, bits + 8);
}

QMX_TARGET inline std::uint32_t unionOfInts(__m256i all) {
    __m128i half = _mm_or_si128(_mm256_castsi256_si128(all), _mm256_extracti128_si256(all, 1));
    half = _mm_or_si128(half, _mm_unpackhi_epi64(half, half));
    half = _mm_or_si128(half, _mm_srli_epi64(half, 32));
    return static_cast<std::uint32_t>(_mm_cvtsi128_si32(half));
}

QMX_TARGET inline __m256i positiveShorts(const short* values, int index) {
    const auto* const lanes = reinterpret_cast<const __m256i*>(values) + index;
    return _mm256_max_epi16(_mm256_loadu_si256(lanes), _mm256_setzero_si256());
}

QMX_TARGET inline __m256i positiveInts(const int* values, int index) {
    const auto* const lanes = reinterpret_cast<const __m256i*>(values) + index;
    return _mm256_max_epi32(_mm256_loadu_si256(lanes), _mm256_setzero_si256());
}

QMX_TARGET inline std::uint32_t unionOf(const short* folded) {
    __m256i all = _mm256_setzero_si256();
    for (int i = 0; i < 4; ++i)
        all = _mm256_or_si256(all, positiveShorts(folded, i));
    const std::uint32_t both = unionOfInts(all);
    return (both | both >> 16) & 0xFFFF;
}

QMX_TARGET inline void slice(const short* folded, int count, std::uint64_t* bits) {
    Words words;
    for (int i = 0; i < 4; ++i)
        words.at[i] = positiveShorts(folded, i);
    sliceWords(words, count, bits);
}

/// Returns: the low words of 16 values; the permutation is that of packBytes.
QMX_TARGET inline __m256i packWords(__m256i a, __m256i b) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
}

QMX_TARGET inline std::uint32_t unionOf(const int* folded) {
    __m256i all = _mm256_setzero_si256();
    for (int i = 0; i < 8; ++i)
        all = _mm256_or_si256(all, positiveInts(folded, i));
    return unionOfInts(all);
}

QMX_TARGET inline void slice(const int* folded, int count, std::uint64_t* bits) {
    const __m256i mask = _mm256_set1_epi32(0xFFFF);
    Words low;
    Words high;
    for (int i = 0; i < 4; ++i) {
        const __m256i a = positiveInts(folded, 2 * i);
        const __m256i b = positiveInts(folded, 2 * i + 1);
        low.at[i] = packWords(_mm256_and_si256(a, mask), _mm256_and_si256(b, mask));
        high.at[i] = packWords(_mm256_srli_epi32(a, 16), _mm256_srli_epi32(b, 16));
    }
    sliceWords(low, count < 16 ? count : 16, bits);
    if (count > 16) sliceWords(high, count - 16, bits + 16);
}

template <class T>
struct Slices {
    QMX_TARGET Slices(const T* folded, std::uint32_t any) { slice(folded, bitLength(any), bits); }
    QMX_TARGET std::uint64_t plane(int i) const { return bits[i]; }

    std::uint64_t bits[8 * sizeof(T)];
};

#include "coding/encode/EncodeEvents.inl"
#include "coding/encode/EncodeGroups.inl"

}  // namespace

const KernelTables<EncodeKernels> kEncodeAvx2{{encodeGroups<short>, keptNothing},
                                              {encodeGroups<int>, keptNothing}};

}  // namespace qmx
