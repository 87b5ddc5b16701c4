#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <algorithm>

#include "image/LanesAvx512.h"
#include "wavelet/LiftingKernels.h"
#include "wavelet/LiftingLines.h"

namespace qmx {
namespace {

using avx512::Vec;
using Lanes = Vec<int>::Lanes;

/// Plain way: half(s) of each 32-bit lane.
QMX_TARGET inline Lanes halves(Lanes sums) {
    const Lanes rounding = _mm512_add_epi32(_mm512_srai_epi32(sums, 31), _mm512_set1_epi32(1));
    return _mm512_srai_epi32(_mm512_add_epi32(sums, rounding), 1);
}

/// Plain way: quarter(s) of each 32-bit lane.
QMX_TARGET inline Lanes quarters(Lanes sums) {
    const Lanes rounding = _mm512_add_epi32(_mm512_srai_epi32(sums, 31), _mm512_set1_epi32(2));
    return _mm512_srai_epi32(_mm512_add_epi32(sums, rounding), 2);
}

/// Lanes of a type with the steps of the filter.
struct ShortVec : Vec<short> {
    QMX_TARGET static Lanes withSample(Lanes lanes, std::size_t i, short sample) {
        return _mm512_mask_set1_epi16(lanes, static_cast<Mask>(1U << i), sample);
    }
    /// even + next even. The vector one sample later has the next evens in its odd lanes; the
    /// multiplication by 1 adds the two of each pair up in 32 bits.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        const Lanes neighbours =
            _mm512_mask_blend_epi16(static_cast<Mask>(~kEvens), pairs, oneLater);
        return _mm512_madd_epi16(neighbours, _mm512_set1_epi16(1));
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
    /// Lanes, but those of pair i, or lane i, from others.
    QMX_TARGET static Lanes withPair(Lanes lanes, std::size_t i, Lanes others) {
        return _mm512_mask_mov_epi32(lanes, static_cast<__mmask16>(1U << i), others);
    }
    QMX_TARGET static Lanes withLane(Lanes lanes, std::size_t i, Lanes others) {
        return _mm512_mask_mov_epi16(lanes, static_cast<Mask>(1U << i), others);
    }
    /// s1 .. s32 -> 0, s1 .. s31
    QMX_TARGET static Lanes laneBefore(Lanes lanes) {
        const Lanes before = _mm512_alignr_epi32(lanes, zero(), 15);
        return either(_mm512_slli_epi32(lanes, 16), _mm512_srli_epi32(before, 16));
    }
    /// s1 .. s32 -> s2 .. s32, 0
    QMX_TARGET static Lanes laneAfter(Lanes lanes) {
        const Lanes after = _mm512_alignr_epi32(zero(), lanes, 1);
        return either(_mm512_srli_epi32(lanes, 16), _mm512_slli_epi32(after, 16));
    }

    // As at the AVX2 level. Truth tables, the operands called a, b, c:
    static constexpr int kNotAAndBAndC = 0x08;
    static constexpr int kNotAOrBAndC = 0x8A;

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) {
        const Lanes floor = floorMean(a, b);
        return add(floor,
                   _mm512_ternarylogic_epi32(signs(floor), differing(a, b), all(1), kNotAAndBAndC));
    }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) {
        const Lanes floor = floorMean(a, b);
        const Lanes lost =
            _mm512_ternarylogic_epi32(signs(floor), differing(a, b), floor, kNotAOrBAndC);
        return add(halved(floor), both(lost, all(1)));
    }
};

struct IntVec : Vec<int> {
    QMX_TARGET static Lanes withSample(Lanes lanes, std::size_t i, int sample) {
        return _mm512_mask_set1_epi32(lanes, static_cast<Mask>(1U << i), sample);
    }
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
    QMX_TARGET static Lanes withPair(Lanes lanes, std::size_t i, Lanes others) {
        return _mm512_mask_mov_epi64(lanes, static_cast<__mmask8>(1U << i), others);
    }
    QMX_TARGET static Lanes withLane(Lanes lanes, std::size_t i, Lanes others) {
        return _mm512_mask_mov_epi32(lanes, static_cast<Mask>(1U << i), others);
    }
    QMX_TARGET static Lanes laneBefore(Lanes lanes) {
        return _mm512_alignr_epi32(lanes, zero(), 15);
    }
    QMX_TARGET static Lanes laneAfter(Lanes lanes) { return _mm512_alignr_epi32(zero(), lanes, 1); }

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) { return halves(add(a, b)); }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) { return quarters(add(a, b)); }
};

#include "wavelet/LiftingKernelsSimd.inl"

}  // namespace

template <class T>
const LiftingKernels<T> LiftingKernels<T>::avx512 = kTable<StepVec<T>>;
template const LiftingKernels<short> LiftingKernels<short>::avx512;
template const LiftingKernels<int> LiftingKernels<int>::avx512;

}  // namespace qmx

#endif
