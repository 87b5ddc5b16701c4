#if defined(__GNUC__) && !defined(__clang__)
// The intrinsics of g++ 12 pass operands that no lane uses on without a value, and are warned about.
#pragma GCC diagnostic ignored "-Wuninitialized"
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#endif

#include <immintrin.h>

#include "wavelet/LiftingKernels.h"
#include "wavelet/LiftingLines.h"

#define QMX_TARGET QMX_TARGET_AVX512

namespace qmx {
namespace {

/// What both coefficient types have in common.
struct Vec {
    using Lanes = __m512i;
    static constexpr bool kHasMasks = true;

    QMX_TARGET static Lanes zero() { return _mm512_setzero_si512(); }
    QMX_TARGET static Lanes addInts(Lanes a, Lanes b) { return _mm512_add_epi32(a, b); }
    /// Plain way: half(s), in 32-bit lanes.
    QMX_TARGET static Lanes half(Lanes sums) {
        const Lanes rounding = _mm512_add_epi32(_mm512_srai_epi32(sums, 31), _mm512_set1_epi32(1));
        return _mm512_srai_epi32(_mm512_add_epi32(sums, rounding), 1);
    }
    /// Plain way: quarter(s), in 32-bit lanes.
    QMX_TARGET static Lanes quarter(Lanes sums) {
        const Lanes rounding = _mm512_add_epi32(_mm512_srai_epi32(sums, 31), _mm512_set1_epi32(2));
        return _mm512_srai_epi32(_mm512_add_epi32(sums, rounding), 2);
    }
    QMX_TARGET static Lanes loadLanes(const void* address) { return _mm512_loadu_si512(address); }
    QMX_TARGET static void storeLanes(void* address, Lanes lanes) {
        _mm512_storeu_si512(address, lanes);
    }
};

struct ShortVec : Vec {
    using Sample = short;
    static constexpr std::size_t kSamples = 32;
    /// Mask of the odd samples.
    static constexpr __mmask32 kOdd = 0xAAAAAAAA;

    /// Mask of the first samples. Requires: at most kSamples.
    QMX_TARGET static __mmask32 first(std::size_t samples) {
        return static_cast<__mmask32>(_bzhi_u32(0xFFFFFFFF, static_cast<unsigned>(samples)));
    }
    QMX_TARGET static Lanes loadFirst(const short* from, std::size_t samples) {
        return _mm512_maskz_loadu_epi16(first(samples), from);
    }
    QMX_TARGET static void storeFirst(short* to, Lanes lanes, std::size_t samples) {
        _mm512_mask_storeu_epi16(to, first(samples), lanes);
    }
    QMX_TARGET static Lanes withSample(Lanes lanes, std::size_t i, short sample) {
        return _mm512_mask_set1_epi16(lanes, static_cast<__mmask32>(1U << i), sample);
    }
    QMX_TARGET static Lanes load(const short* from) { return loadLanes(from); }
    QMX_TARGET static void store(short* to, Lanes lanes) { storeLanes(to, lanes); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm512_add_epi16(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi16(a, b); }

    /// even + next even. The vector one sample later has the next evens in its odd lanes; the
    /// multiplication by 1 adds the two of each pair up in 32 bits.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        const Lanes both = _mm512_mask_blend_epi16(kOdd, pairs, oneLater);
        return _mm512_madd_epi16(both, _mm512_set1_epi16(1));
    }
    /// The evens of the pairs, or their odds, in 32 bits.
    QMX_TARGET static Lanes evens(Lanes pairs) {
        return _mm512_madd_epi16(pairs, _mm512_set1_epi32(1));
    }
    QMX_TARGET static Lanes odds(Lanes pairs) { return _mm512_srai_epi32(pairs, 16); }
    /// A value of each pair, for its odd or even sample; 0 for the other one.
    QMX_TARGET static Lanes toOdd(Lanes values) { return _mm512_slli_epi32(values, 16); }
    QMX_TARGET static Lanes toEven(Lanes values) {
        return _mm512_and_si512(values, _mm512_set1_epi32(0xFFFF));
    }
    /// p1 .. p16 -> last of before, p1 .. p15
    QMX_TARGET static Lanes pairBefore(Lanes pairs, Lanes before) {
        return _mm512_alignr_epi32(pairs, before, 15);
    }
    /// p1 .. p16 -> p2 .. p16, first of after
    QMX_TARGET static Lanes pairAfter(Lanes pairs, Lanes after) {
        return _mm512_alignr_epi32(after, pairs, 1);
    }
    QMX_TARGET static Lanes withFirst(Lanes lanes, short sample) {
        return withSample(lanes, 0, sample);
    }

    // As at the AVX2 level. Truth tables, the operands called a, b, c:
    static constexpr int kNotAAndBAndC = 0x08;
    static constexpr int kNotAOrBAndC = 0x8A;

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) {
        const Lanes differing = _mm512_xor_si512(a, b);
        const Lanes floor =
            _mm512_add_epi16(_mm512_and_si512(a, b), _mm512_srai_epi16(differing, 1));
        const Lanes isNegative = _mm512_srai_epi16(floor, 15);
        const Lanes lost =
            _mm512_ternarylogic_epi32(isNegative, differing, _mm512_set1_epi16(1), kNotAAndBAndC);
        return _mm512_add_epi16(floor, lost);
    }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) {
        const Lanes differing = _mm512_xor_si512(a, b);
        const Lanes floor =
            _mm512_add_epi16(_mm512_and_si512(a, b), _mm512_srai_epi16(differing, 1));
        const Lanes isNegative = _mm512_srai_epi16(floor, 15);
        const Lanes lost = _mm512_ternarylogic_epi32(isNegative, differing, floor, kNotAOrBAndC);
        return _mm512_add_epi16(_mm512_srai_epi16(floor, 1),
                                _mm512_and_si512(lost, _mm512_set1_epi16(1)));
    }

    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        const Lanes evens = _mm512_packus_epi32(toEven(first), toEven(second));
        // f0 s0 f1 s1 f2 s2 f3 s3 -> f0 f1 f2 f3 s0 s1 s2 s3
        const Lanes order = _mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7);
        return _mm512_permutexvar_epi64(order, evens);
    }
    QMX_TARGET static Lanes withEvens(Lanes pairs, const short* evens) {
        const __m256i sixteen = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(evens));
        return _mm512_mask_blend_epi16(kOdd, _mm512_cvtepu16_epi32(sixteen), pairs);
    }
};

struct IntVec : Vec {
    using Sample = int;
    static constexpr std::size_t kSamples = 16;
    static constexpr __mmask16 kOdd = 0xAAAA;

    /// Mask of the first samples. Requires: at most kSamples.
    QMX_TARGET static __mmask16 first(std::size_t samples) {
        return static_cast<__mmask16>(_bzhi_u32(0xFFFF, static_cast<unsigned>(samples)));
    }
    QMX_TARGET static Lanes loadFirst(const int* from, std::size_t samples) {
        return _mm512_maskz_loadu_epi32(first(samples), from);
    }
    QMX_TARGET static void storeFirst(int* to, Lanes lanes, std::size_t samples) {
        _mm512_mask_storeu_epi32(to, first(samples), lanes);
    }
    QMX_TARGET static Lanes withSample(Lanes lanes, std::size_t i, int sample) {
        return _mm512_mask_set1_epi32(lanes, static_cast<__mmask16>(1U << i), sample);
    }
    QMX_TARGET static Lanes load(const int* from) { return loadLanes(from); }
    QMX_TARGET static void store(int* to, Lanes lanes) { storeLanes(to, lanes); }
    QMX_TARGET static Lanes add(Lanes a, Lanes b) { return _mm512_add_epi32(a, b); }
    QMX_TARGET static Lanes sub(Lanes a, Lanes b) { return _mm512_sub_epi32(a, b); }

    /// even + next even in the even lanes; the odd lanes do not count. The vector one sample later
    /// has the next evens in its odd lanes.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        return add(pairs, _mm512_srli_epi64(oneLater, 32));
    }
    /// The evens stand in the even lanes, the odds in the odd ones; the others do not count.
    QMX_TARGET static Lanes evens(Lanes pairs) { return pairs; }
    QMX_TARGET static Lanes odds(Lanes pairs) { return pairs; }
    /// The value in the even lanes, for the odd samples; 0 for the others.
    QMX_TARGET static Lanes toOdd(Lanes values) { return _mm512_slli_epi64(values, 32); }
    QMX_TARGET static Lanes toEven(Lanes values) { return _mm512_srli_epi64(values, 32); }
    /// p1 .. p8 -> last of before, p1 .. p7
    QMX_TARGET static Lanes pairBefore(Lanes pairs, Lanes before) {
        return _mm512_alignr_epi64(pairs, before, 7);
    }
    /// p1 .. p8 -> p2 .. p8, first of after
    QMX_TARGET static Lanes pairAfter(Lanes pairs, Lanes after) {
        return _mm512_alignr_epi64(after, pairs, 1);
    }
    QMX_TARGET static Lanes withFirst(Lanes lanes, int sample) {
        return withSample(lanes, 0, sample);
    }

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) { return half(add(a, b)); }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) { return quarter(add(a, b)); }

    QMX_TARGET static Lanes evensOf(Lanes first, Lanes second) {
        return _mm512_inserti64x4(_mm512_castsi256_si512(_mm512_cvtepi64_epi32(first)),
                                  _mm512_cvtepi64_epi32(second), 1);
    }
    QMX_TARGET static Lanes withEvens(Lanes pairs, const int* evens) {
        const __m256i eight = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(evens));
        return _mm512_mask_blend_epi32(kOdd, _mm512_cvtepu32_epi64(eight), pairs);
    }
};

#include "wavelet/LiftingKernelsSimd.inl"

}  // namespace

const KernelTables<LiftingKernels> kLiftingAvx512{kTable<ShortVec>, kTable<IntVec>};

}  // namespace qmx
