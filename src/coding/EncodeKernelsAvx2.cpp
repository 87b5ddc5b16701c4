#include <bit>
#include <immintrin.h>

#include "coding/EncodeKernels.h"
#include "coding/RunTables.h"

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

QMX_TARGET inline __m256i loadInts(const void* values, int index) {
    return _mm256_loadu_si256(static_cast<const __m256i*>(values) + index);
}

QMX_TARGET inline std::uint32_t slice(const short* folded, std::uint64_t* bits) {
    const __m256i zero = _mm256_setzero_si256();
    Words words;
    __m256i all = zero;
    for (int i = 0; i < 4; ++i) {
        words.at[i] = _mm256_max_epi16(loadInts(folded, i), zero);
        all = _mm256_or_si256(all, words.at[i]);
    }
    const std::uint32_t both = unionOfInts(all);
    const std::uint32_t any = (both | both >> 16) & 0xFFFF;
    sliceWords(words, bitLength(any), bits);
    return any;
}

/// Returns: the low words of 16 values; the permutation is that of packBytes.
QMX_TARGET inline __m256i packWords(__m256i a, __m256i b) {
    return _mm256_permute4x64_epi64(_mm256_packus_epi32(a, b), 0xD8);
}

QMX_TARGET inline std::uint32_t slice(const int* folded, std::uint64_t* bits) {
    const __m256i zero = _mm256_setzero_si256();
    const __m256i mask = _mm256_set1_epi32(0xFFFF);
    Words low;
    Words high;
    __m256i all = zero;
    for (int i = 0; i < 4; ++i) {
        const __m256i a = _mm256_max_epi32(loadInts(folded, 2 * i), zero);
        const __m256i b = _mm256_max_epi32(loadInts(folded, 2 * i + 1), zero);
        all = _mm256_or_si256(all, _mm256_or_si256(a, b));
        low.at[i] = packWords(_mm256_and_si256(a, mask), _mm256_and_si256(b, mask));
        high.at[i] = packWords(_mm256_srli_epi32(a, 16), _mm256_srli_epi32(b, 16));
    }
    const std::uint32_t any = unionOfInts(all);
    const int count = bitLength(any);
    sliceWords(low, count < 16 ? count : 16, bits);
    if (count > 16) sliceWords(high, count - 16, bits + 16);
    return any;
}

template <class T>
struct Slices {
    QMX_TARGET explicit Slices(const T* folded) : any(slice(folded, bits)) {}
    QMX_TARGET std::uint64_t plane(int i) const { return bits[i]; }

    std::uint32_t any;
    std::uint64_t bits[8 * sizeof(T)];
};

#include "coding/EncodeEvents.inl"
#include "coding/EncodeGroups.inl"

}  // namespace

const EncodeKernels<short> kEncodeShortAvx2{encodeGroups<short>, keptNothing};
const EncodeKernels<int> kEncodeIntAvx2{encodeGroups<int>, keptNothing};

}  // namespace qmx
