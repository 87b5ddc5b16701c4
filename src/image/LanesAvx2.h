#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <immintrin.h>

#include "image/CpuLevel.h"

/// The level of the file that includes this, and its lanes: Vec<short> and Vec<int> name the same
/// operations here and in LanesAvx512.h. A pair is an even and the odd lane behind it.
#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx::avx2 {

/// What does not depend on the size of a lane.
struct AnyVec {
    using Lanes = __m256i;
    using Half = __m128i;
    static constexpr bool kHasMasks = false;

    QMX_TARGET static Lanes load(const void* from) {
        return _mm256_loadu_si256(static_cast<const __m256i*>(from));
    }
    QMX_TARGET static void store(void* to, Lanes v) {
        _mm256_storeu_si256(static_cast<__m256i*>(to), v);
    }
    QMX_TARGET static Half loadHalf(const void* from) {
        return _mm_loadu_si128(static_cast<const __m128i*>(from));
    }
    QMX_TARGET static void storeHalf(void* to, Half v) {
        _mm_storeu_si128(static_cast<__m128i*>(to), v);
    }
    QMX_TARGET static Half lowHalf(Lanes v) { return _mm256_castsi256_si128(v); }
    QMX_TARGET static Half highHalf(Lanes v) { return _mm256_extracti128_si256(v, 1); }
    QMX_TARGET static Lanes zero() { return _mm256_setzero_si256(); }
    QMX_TARGET static Lanes both(Lanes a, Lanes b) { return _mm256_and_si256(a, b); }
    QMX_TARGET static Lanes either(Lanes a, Lanes b) { return _mm256_or_si256(a, b); }
    QMX_TARGET static Lanes differing(Lanes a, Lanes b) { return _mm256_xor_si256(a, b); }
    /// Returns: whether any lane has one of the bits.
    QMX_TARGET static bool hasAny(Lanes v, Lanes bits) { return _mm256_testz_si256(v, bits) == 0; }
    /// Returns: the union of the 64-bit lanes.
    QMX_TARGET static std::uint64_t joined(Lanes v) {
        const __m128i two = _mm_or_si128(lowHalf(v), highHalf(v));
        return static_cast<std::uint64_t>(
            _mm_cvtsi128_si64(_mm_or_si128(two, _mm_unpackhi_epi64(two, two))));
    }
    /// f0 s0 f1 s1 -> f0 f1 s0 s1: packs work on each 128-bit half by itself.
    QMX_TARGET static Lanes inOrder(Lanes v) { return _mm256_permute4x64_epi64(v, 0xD8); }
    /// Undoes inOrder.
    QMX_TARGET static Lanes apart(Lanes v) { return _mm256_permute4x64_epi64(v, 0xD8); }
};

template <class T>
struct Vec;

template <>
struct Vec<unsigned char> : AnyVec {
    using Sample = unsigned char;
    static constexpr std::size_t kSamples = 32;

    /// 2 v, and 1 more in lane i where bit i is set; bits behind the lanes do not count.
    QMX_TARGET static Lanes twiceAndBits(Lanes v, std::uint64_t bits) {
        // Each 128-bit half gets the byte that its lanes ask for: 0 and 1, or 2 and 3.
        const Lanes places =
            _mm256_setr_epi64x(0, 0x0101010101010101, 0x0202020202020202, 0x0303030303030303);
        const Lanes select = _mm256_set1_epi64x(static_cast<long long>(0x8040201008040201));
        const Lanes spread = _mm256_shuffle_epi8(_mm256_set1_epi32(static_cast<int>(bits)), places);
        const Lanes isSet = _mm256_cmpeq_epi8(both(spread, select), select);
        return _mm256_sub_epi8(_mm256_add_epi8(v, v), isSet);
    }
    /// a0 b0 a1 b1 .. of the lanes of two vectors: the first half, and the second.
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm256_unpacklo_epi8(apart(a), apart(b));
        both[1] = _mm256_unpackhi_epi8(apart(a), apart(b));
    }
};

template <>
struct Vec<short> : AnyVec {
    using Sample = short;
    static constexpr std::size_t kSamples = 16;

    QMX_TARGET static Lanes all(int x) { return _mm256_set1_epi16(static_cast<short>(x)); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }
    QMX_TARGET static Lanes least(Lanes a, Lanes b) { return _mm256_min_epi16(a, b); }
    QMX_TARGET static Lanes greatest(Lanes a, Lanes b) { return _mm256_max_epi16(a, b); }
    QMX_TARGET static Lanes magnitudes(Lanes v) { return _mm256_abs_epi16(v); }
    /// -1 for lanes below 0, 0 for others.
    QMX_TARGET static Lanes signs(Lanes v) { return _mm256_srai_epi16(v, 15); }
    QMX_TARGET static Lanes halved(Lanes v) { return _mm256_srai_epi16(v, 1); }
    /// (a + b) >> 1, without the carry that a + b may need.
    QMX_TARGET static Lanes floorMean(Lanes a, Lanes b) {
        return add(both(a, b), halved(differing(a, b)));
    }
    /// Returns: the union of all lanes.
    QMX_TARGET static std::uint32_t unionOf(Lanes v) {
        const std::uint64_t two = joined(v) | joined(v) >> 32;
        return static_cast<std::uint32_t>((two | two >> 16) & 0xFFFF);
    }
    QMX_TARGET static std::uint64_t countZeros(Lanes v) {
        const Lanes isZero = _mm256_cmpeq_epi16(v, zero());
        return static_cast<unsigned>(
                   _mm_popcnt_u32(static_cast<unsigned>(_mm256_movemask_epi8(isZero)))) /
               sizeof(Sample);
    }
    /// Bytes to lanes, without sign, and the low bytes of lanes.
    QMX_TARGET static Lanes widened(Half bytes) { return _mm256_cvtepu8_epi16(bytes); }
    QMX_TARGET static Half narrowed(Lanes v) {
        const Lanes low = both(v, all(0xFF));
        return _mm_packus_epi16(lowHalf(low), highHalf(low));
    }
    /// The evens, or odds, of the pairs of two vectors.
    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const Lanes low = _mm256_set1_epi32(0xFFFF);
        return inOrder(_mm256_packus_epi32(both(first, low), both(second, low)));
    }
    QMX_TARGET static Lanes oddsOf(Lanes first, Lanes second) {
        return inOrder(
            _mm256_packus_epi32(_mm256_srli_epi32(first, 16), _mm256_srli_epi32(second, 16)));
    }
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm256_unpacklo_epi16(apart(a), apart(b));
        both[1] = _mm256_unpackhi_epi16(apart(a), apart(b));
    }
    /// -v in lane i where bit i is set: (v ^ -1) - -1.
    QMX_TARGET static Lanes negatedWhere(Lanes v, std::uint64_t bits) {
        const Lanes isSet = whereSet(bits);
        return sub(differing(v, isSet), isSet);
    }

private:
    /// -1 in lane i where bit i is set.
    QMX_TARGET static Lanes whereSet(std::uint64_t bits) {
        const Lanes select = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048,
                                               4096, 8192, 16384, -32768);
        const Lanes spread = _mm256_set1_epi16(static_cast<short>(bits));
        return _mm256_cmpeq_epi16(both(spread, select), select);
    }
};

template <>
struct Vec<int> : AnyVec {
    using Sample = int;
    static constexpr std::size_t kSamples = 8;

    QMX_TARGET static Lanes all(int x) { return _mm256_set1_epi32(x); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi32(a, b); }
    QMX_TARGET static Lanes least(Lanes a, Lanes b) { return _mm256_min_epi32(a, b); }
    QMX_TARGET static Lanes greatest(Lanes a, Lanes b) { return _mm256_max_epi32(a, b); }
    QMX_TARGET static Lanes magnitudes(Lanes v) { return _mm256_abs_epi32(v); }
    QMX_TARGET static Lanes signs(Lanes v) { return _mm256_srai_epi32(v, 31); }
    QMX_TARGET static std::uint32_t unionOf(Lanes v) {
        return static_cast<std::uint32_t>(joined(v) | joined(v) >> 32);
    }
    QMX_TARGET static std::uint64_t countZeros(Lanes v) {
        const Lanes isZero = _mm256_cmpeq_epi32(v, zero());
        return static_cast<unsigned>(
                   _mm_popcnt_u32(static_cast<unsigned>(_mm256_movemask_epi8(isZero)))) /
               sizeof(Sample);
    }
    /// Shorts to lanes, without sign, and the low halves of lanes.
    QMX_TARGET static Lanes widened(Half shorts) { return _mm256_cvtepu16_epi32(shorts); }
    QMX_TARGET static Half narrowed(Lanes v) {
        const Lanes low = both(v, all(0xFFFF));
        return _mm_packus_epi32(lowHalf(low), highHalf(low));
    }
    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        return picked<0x88>(first, second);
    }
    QMX_TARGET static Lanes oddsOf(Lanes first, Lanes second) {
        return picked<0xDD>(first, second);
    }
    QMX_TARGET static void zip(Lanes a, Lanes b, Lanes* both) {
        both[0] = _mm256_unpacklo_epi32(apart(a), apart(b));
        both[1] = _mm256_unpackhi_epi32(apart(a), apart(b));
    }
    QMX_TARGET static Lanes negatedWhere(Lanes v, std::uint64_t bits) {
        const Lanes isSet = whereSet(bits);
        return sub(differing(v, isSet), isSet);
    }

private:
    QMX_TARGET static Lanes whereSet(std::uint64_t bits) {
        const Lanes select = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
        return _mm256_cmpeq_epi32(both(all(static_cast<int>(bits)), select), select);
    }
    template <int Places>
    QMX_TARGET static Lanes picked(Lanes first, Lanes second) {
        return inOrder(_mm256_castps_si256(
            _mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(second), Places)));
    }
};

}  // namespace qmx::avx2
