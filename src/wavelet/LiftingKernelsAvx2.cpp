#include <immintrin.h>

#include "wavelet/LiftingKernels.h"
#include "wavelet/LiftingLines.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

/// What both coefficient types have in common.
struct Vec {
    using Lanes = __m256i;
    static constexpr bool kHasMasks = false;

    QMX_TARGET static Lanes zero() { return _mm256_setzero_si256(); }
    QMX_TARGET static Lanes addInts(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    /// Plain way: half(s), in 32-bit lanes. The comparison is -1 for s >= 0.
    QMX_TARGET static Lanes half(Lanes sums) {
        const Lanes isPositive = _mm256_cmpgt_epi32(sums, _mm256_set1_epi32(-1));
        return _mm256_srai_epi32(_mm256_sub_epi32(sums, isPositive), 1);
    }
    /// Plain way: quarter(s), in 32-bit lanes.
    QMX_TARGET static Lanes quarter(Lanes sums) {
        const Lanes isPositive = _mm256_cmpgt_epi32(sums, _mm256_set1_epi32(-1));
        const Lanes sumsAndOne = _mm256_add_epi32(sums, _mm256_set1_epi32(1));
        return _mm256_srai_epi32(_mm256_sub_epi32(sumsAndOne, isPositive), 2);
    }
    QMX_TARGET static Lanes loadLanes(const void* address) {
        return _mm256_loadu_si256(static_cast<const __m256i*>(address));
    }
    QMX_TARGET static void storeLanes(void* address, Lanes lanes) {
        _mm256_storeu_si256(static_cast<__m256i*>(address), lanes);
    }
};

struct ShortVec : Vec {
    using Sample = short;
    static constexpr std::size_t kSamples = 16;

    QMX_TARGET static Lanes load(const short* from) { return loadLanes(from); }
    QMX_TARGET static void store(short* to, Lanes lanes) { storeLanes(to, lanes); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi16(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi16(a, b); }

    /// even + next even. The vector one sample later has the next evens in its odd lanes; the
    /// multiplication by 1 adds the two of each pair up in 32 bits.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        const Lanes both = _mm256_blend_epi16(pairs, oneLater, 0xAA);
        return _mm256_madd_epi16(both, _mm256_set1_epi16(1));
    }
    /// The evens of the pairs, or their odds, in 32 bits.
    QMX_TARGET static Lanes evens(Lanes pairs) {
        return _mm256_madd_epi16(pairs, _mm256_set1_epi32(1));
    }
    QMX_TARGET static Lanes odds(Lanes pairs) { return _mm256_srai_epi32(pairs, 16); }
    /// A value of each pair, for its odd or even sample; 0 for the other one.
    QMX_TARGET static Lanes toOdd(Lanes values) { return _mm256_slli_epi32(values, 16); }
    QMX_TARGET static Lanes toEven(Lanes values) {
        return _mm256_blend_epi16(values, _mm256_setzero_si256(), 0xAA);
    }
    /// p1 .. p8 -> last of before, p1 .. p7
    QMX_TARGET static Lanes pairBefore(Lanes pairs, Lanes before) {
        return _mm256_alignr_epi8(pairs, _mm256_permute2x128_si256(before, pairs, 0x21), 12);
    }
    /// p1 .. p8 -> p2 .. p8, first of after
    QMX_TARGET static Lanes pairAfter(Lanes pairs, Lanes after) {
        return _mm256_alignr_epi8(_mm256_permute2x128_si256(pairs, after, 0x21), pairs, 4);
    }
    QMX_TARGET static Lanes withFirst(Lanes lanes, short sample) {
        return _mm256_insert_epi16(lanes, sample, 0);
    }

    // In 16 bits: floor(s / 2) = (a & b) + ((a ^ b) >> 1) does not overflow and has the sign of
    // s; the lost bit is that of a ^ b. half(s) adds it unless s < 0. quarter(s) is
    // floor(floor(s / 2) / 2), and 1 more where floor(s / 2) is odd, unless s < 0 and s is even.

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) {
        const Lanes differing = _mm256_xor_si256(a, b);
        const Lanes floor =
            _mm256_add_epi16(_mm256_and_si256(a, b), _mm256_srai_epi16(differing, 1));
        const Lanes isNegative = _mm256_srai_epi16(floor, 15);
        const Lanes lost = _mm256_andnot_si256(isNegative, differing);
        return _mm256_add_epi16(floor, _mm256_and_si256(lost, _mm256_set1_epi16(1)));
    }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) {
        const Lanes differing = _mm256_xor_si256(a, b);
        const Lanes floor =
            _mm256_add_epi16(_mm256_and_si256(a, b), _mm256_srai_epi16(differing, 1));
        const Lanes isPositive = _mm256_cmpgt_epi16(floor, _mm256_set1_epi16(-1));
        const Lanes lost = _mm256_and_si256(_mm256_or_si256(differing, isPositive), floor);
        return _mm256_add_epi16(_mm256_srai_epi16(floor, 1),
                                _mm256_and_si256(lost, _mm256_set1_epi16(1)));
    }

    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const Lanes zero = _mm256_setzero_si256();
        const Lanes evens = _mm256_packus_epi32(_mm256_blend_epi16(first, zero, 0xAA),
                                                _mm256_blend_epi16(second, zero, 0xAA));
        // f0 s0 f1 s1 -> f0 f1 s0 s1
        return _mm256_permute4x64_epi64(evens, 0xD8);
    }
    QMX_TARGET static Lanes withEvens(Lanes pairs, const short* evens) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(evens));
        return _mm256_blend_epi16(_mm256_cvtepu16_epi32(eight), pairs, 0xAA);
    }
};

struct IntVec : Vec {
    using Sample = int;
    static constexpr std::size_t kSamples = 8;

    QMX_TARGET static Lanes load(const int* from) { return loadLanes(from); }
    QMX_TARGET static void store(int* to, Lanes lanes) { storeLanes(to, lanes); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm256_add_epi32(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm256_sub_epi32(a, b); }

    /// even + next even in the even lanes; the odd lanes do not count. The vector one sample later
    /// has the next evens in its odd lanes.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        return add(pairs, _mm256_srli_epi64(oneLater, 32));
    }
    /// The evens stand in the even lanes, the odds in the odd ones; the others do not count.
    QMX_TARGET static Lanes evens(Lanes pairs) { return pairs; }
    QMX_TARGET static Lanes odds(Lanes pairs) { return pairs; }
    /// The value in the even lanes, for the odd samples; 0 for the others.
    QMX_TARGET static Lanes toOdd(Lanes values) { return _mm256_slli_epi64(values, 32); }
    QMX_TARGET static Lanes toEven(Lanes values) { return _mm256_srli_epi64(values, 32); }
    /// p1 .. p4 -> last of before, p1 .. p3
    QMX_TARGET static Lanes pairBefore(Lanes pairs, Lanes before) {
        return _mm256_alignr_epi8(pairs, _mm256_permute2x128_si256(before, pairs, 0x21), 8);
    }
    /// p1 .. p4 -> p2 .. p4, first of after
    QMX_TARGET static Lanes pairAfter(Lanes pairs, Lanes after) {
        return _mm256_alignr_epi8(_mm256_permute2x128_si256(pairs, after, 0x21), pairs, 8);
    }
    QMX_TARGET static Lanes withFirst(Lanes lanes, int sample) {
        return _mm256_insert_epi32(lanes, sample, 0);
    }

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) { return half(add(a, b)); }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) { return quarter(add(a, b)); }

    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const __m256 evens =
            _mm256_shuffle_ps(_mm256_castsi256_ps(first), _mm256_castsi256_ps(second), 0x88);
        // f0 s0 f1 s1 -> f0 f1 s0 s1
        return _mm256_permute4x64_epi64(_mm256_castps_si256(evens), 0xD8);
    }
    QMX_TARGET static Lanes withEvens(Lanes pairs, const int* evens) {
        const __m128i four = _mm_loadu_si128(reinterpret_cast<const __m128i*>(evens));
        return _mm256_blend_epi32(_mm256_cvtepu32_epi64(four), pairs, 0xAA);
    }
};

#include "wavelet/LiftingKernelsSimd.inl"

}  // namespace

const KernelTables<LiftingKernels> kLiftingAvx2{kTable<ShortVec>, kTable<IntVec>};

}  // namespace qmx
