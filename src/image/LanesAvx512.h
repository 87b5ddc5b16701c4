#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#if defined(__GNUC__) && !defined(__clang__)
// The intrinsics of g++ 12 pass operands that no lane uses on without a value, and are warned about.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#else
#include <immintrin.h>
#endif

#include "image/CpuLevel.h"

/// The level of the file that includes this, and its lanes. Operations are described in LanesAvx2.h,
/// but for those with masks.
#define QMX_TARGET QMX_TARGET_AVX512

namespace qmx::avx512 {

/// What does not depend on the size of a lane.
struct AnyVec {
    using Lanes = __m512i;
    using Half = __m256i;
    static constexpr bool kHasMasks = true;

    QMX_TARGET static Lanes load(const void* from) { return _mm512_loadu_si512(from); }
    QMX_TARGET static void store(void* to, Lanes v) { _mm512_storeu_si512(to, v); }
    QMX_TARGET static Half loadHalf(const void* from) {
        return _mm256_loadu_si256(static_cast<const __m256i*>(from));
    }
    QMX_TARGET static void storeHalf(void* to, Half v) {
        _mm256_storeu_si256(static_cast<__m256i*>(to), v);
    }
    QMX_TARGET static Half lowHalf(Lanes v) { return _mm512_castsi512_si256(v); }
    QMX_TARGET static Half highHalf(Lanes v) { return _mm512_extracti64x4_epi64(v, 1); }
    QMX_TARGET static Lanes zero() { return _mm512_setzero_si512(); }
    QMX_TARGET static Lanes both(Lanes a, Lanes b) { return _mm512_and_si512(a, b); }
    QMX_TARGET static Lanes either(Lanes a, Lanes b) { return _mm512_or_si512(a, b); }
    QMX_TARGET static Lanes differing(Lanes a, Lanes b) { return _mm512_xor_si512(a, b); }
    QMX_TARGET static bool hasAny(Lanes v, Lanes bits) {
        return _mm512_test_epi32_mask(v, bits) != 0;
    }
    QMX_TARGET static std::uint64_t joined(Lanes v) {
        const __m256i four = _mm256_or_si256(lowHalf(v), highHalf(v));
        const __m128i two =
            _mm_or_si128(_mm256_castsi256_si128(four), _mm256_extracti128_si256(four, 1));
        return static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_or_si128(two, _mm_unpackhi_epi64(two, two))));
    }
    /// f0 s0 f1 s1 f2 s2 f3 s3 -> f0 f1 f2 f3 s0 s1 s2 s3: packs work on each 128 bits by themselves.
    QMX_TARGET static Lanes inOrder(Lanes v) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v);
    }
    /// Undoes inOrder.
    QMX_TARGET static Lanes apart(Lanes v) {
        return _mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), v);
    }
};

template <class T>
struct Vec;

template <>
struct Vec<unsigned char> : AnyVec {
    using Sample = unsigned char;
    static constexpr std::size_t kSamples = 64;

    QMX_TARGET static Lanes twiceAndBits(Lanes v, std::uint64_t bits) {
        const Lanes twice = _mm512_add_epi8(v, v);
        return _mm512_mask_sub_epi8(twice, bits, twice, _mm512_set1_epi8(-1));
    }
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm512_unpacklo_epi8(apart(a), apart(b));
        both[1] = _mm512_unpackhi_epi8(apart(a), apart(b));
    }
};

template <>
struct Vec<short> : AnyVec {
    using Sample = short;
    using Mask = __mmask32;
    static constexpr std::size_t kSamples = 32;
    static constexpr Mask kEvens = 0x55555555;

    /// Mask of the first lanes. Requires: at most kSamples.
    QMX_TARGET static Mask first(std::size_t samples) {
        return static_cast<Mask>(_bzhi_u32(0xFFFFFFFF, static_cast<unsigned>(samples)));
    }
    /// Touch the first samples alone; other lanes are 0.
    QMX_TARGET static Lanes loadFirst(const short* from, std::size_t samples) {
        return _mm512_maskz_loadu_epi16(first(samples), from);
    }
    QMX_TARGET static void storeFirst(short* to, Lanes v, std::size_t samples) {
        _mm512_mask_storeu_epi16(to, first(samples), v);
    }
    QMX_TARGET static Lanes all(int x) { return _mm512_set1_epi16(static_cast<short>(x)); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm512_add_epi16(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi16(a, b); }
    QMX_TARGET static Lanes least(Lanes a, Lanes b) { return _mm512_min_epi16(a, b); }
    QMX_TARGET static Lanes greatest(Lanes a, Lanes b) { return _mm512_max_epi16(a, b); }
    QMX_TARGET static Lanes magnitudes(Lanes v) { return _mm512_abs_epi16(v); }
    QMX_TARGET static Lanes signs(Lanes v) { return _mm512_srai_epi16(v, 15); }
    QMX_TARGET static Lanes halved(Lanes v) { return _mm512_srai_epi16(v, 1); }
    QMX_TARGET static Lanes floorMean(Lanes a, Lanes b) {
        return add(both(a, b), halved(differing(a, b)));
    }
    /// Mask of the lanes that have one of the bits.
    QMX_TARGET static Mask whereAny(Lanes v, Lanes bits) { return _mm512_test_epi16_mask(v, bits); }
    QMX_TARGET static std::uint32_t unionOf(Lanes v) {
        const std::uint64_t two = joined(v) | joined(v) >> 32;
        return static_cast<std::uint32_t>((two | two >> 16) & 0xFFFF);
    }
    QMX_TARGET static std::uint64_t countZeros(Lanes v) {
        return static_cast<unsigned>(_mm_popcnt_u32(_mm512_testn_epi16_mask(v, v)));
    }
    QMX_TARGET static Lanes widened(Half bytes) { return _mm512_cvtepu8_epi16(bytes); }
    QMX_TARGET static Half narrowed(Lanes v) { return _mm512_cvtepi16_epi8(v); }
    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const Lanes low = _mm512_set1_epi32(0xFFFF);
        return inOrder(_mm512_packus_epi32(both(first, low), both(second, low)));
    }
    QMX_TARGET static Lanes oddsOf(Lanes first, Lanes second) {
        return inOrder(
            _mm512_packus_epi32(_mm512_srli_epi32(first, 16), _mm512_srli_epi32(second, 16)));
    }
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm512_unpacklo_epi16(apart(a), apart(b));
        both[1] = _mm512_unpackhi_epi16(apart(a), apart(b));
    }
    QMX_TARGET static Lanes negatedWhere(Lanes v, std::uint64_t bits) {
        return _mm512_mask_sub_epi16(v, static_cast<Mask>(bits), zero(), v);
    }
};

template <>
struct Vec<int> : AnyVec {
    using Sample = int;
    using Mask = __mmask16;
    static constexpr std::size_t kSamples = 16;
    static constexpr Mask kEvens = 0x5555;

    QMX_TARGET static Mask first(std::size_t samples) {
        return static_cast<Mask>(_bzhi_u32(0xFFFF, static_cast<unsigned>(samples)));
    }
    QMX_TARGET static Lanes loadFirst(const int* from, std::size_t samples) {
        return _mm512_maskz_loadu_epi32(first(samples), from);
    }
    QMX_TARGET static void storeFirst(int* to, Lanes v, std::size_t samples) {
        _mm512_mask_storeu_epi32(to, first(samples), v);
    }
    QMX_TARGET static Lanes all(int x) { return _mm512_set1_epi32(x); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm512_add_epi32(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi32(a, b); }
    QMX_TARGET static Lanes least(Lanes a, Lanes b) { return _mm512_min_epi32(a, b); }
    QMX_TARGET static Lanes greatest(Lanes a, Lanes b) { return _mm512_max_epi32(a, b); }
    QMX_TARGET static Lanes magnitudes(Lanes v) { return _mm512_abs_epi32(v); }
    QMX_TARGET static Lanes signs(Lanes v) { return _mm512_srai_epi32(v, 31); }
    QMX_TARGET static Mask whereAny(Lanes v, Lanes bits) { return _mm512_test_epi32_mask(v, bits); }
    QMX_TARGET static std::uint32_t unionOf(Lanes v) {
        return static_cast<std::uint32_t>(joined(v) | joined(v) >> 32);
    }
    QMX_TARGET static std::uint64_t countZeros(Lanes v) {
        return static_cast<unsigned>(_mm_popcnt_u32(_mm512_testn_epi32_mask(v, v)));
    }
    QMX_TARGET static Lanes widened(Half shorts) { return _mm512_cvtepu16_epi32(shorts); }
    QMX_TARGET static Half narrowed(Lanes v) { return _mm512_cvtepi32_epi16(v); }
    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const Lanes places =
            _mm512_setr_epi32(0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
        return _mm512_permutex2var_epi32(first, places, second);
    }
    QMX_TARGET static Lanes oddsOf(Lanes first, Lanes second) {
        const Lanes places =
            _mm512_setr_epi32(1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
        return _mm512_permutex2var_epi32(first, places, second);
    }
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm512_unpacklo_epi32(apart(a), apart(b));
        both[1] = _mm512_unpackhi_epi32(apart(a), apart(b));
    }
    QMX_TARGET static Lanes negatedWhere(Lanes v, std::uint64_t bits) {
        return _mm512_mask_sub_epi32(v, static_cast<Mask>(bits), zero(), v);
    }
};

}  // namespace qmx::avx512
