#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <algorithm>

#include "image/LanesAvx2.h"
#include "wavelet/LiftingKernels.h"
#include "wavelet/LiftingLines.h"

namespace qmx {
namespace {

using avx2::Vec;
using Lanes = Vec<int>::Lanes;

/// Plain way: half(s) of each 32-bit lane. The comparison is -1 for s >= 0.
QMX_TARGET inline Lanes halves(Lanes sums) {
    const Lanes isPositive = _mm256_cmpgt_epi32(sums, _mm256_set1_epi32(-1));
    return _mm256_srai_epi32(_mm256_sub_epi32(sums, isPositive), 1);
}

/// Plain way: quarter(s) of each 32-bit lane.
QMX_TARGET inline Lanes quarters(Lanes sums) {
    const Lanes isPositive = _mm256_cmpgt_epi32(sums, _mm256_set1_epi32(-1));
    const Lanes sumsAndOne = _mm256_add_epi32(sums, _mm256_set1_epi32(1));
    return _mm256_srai_epi32(_mm256_sub_epi32(sumsAndOne, isPositive), 2);
}

/// Lanes of a type with the steps of the filter.
struct ShortVec : Vec<short> {
    /// even + next even. The vector one sample later has the next evens in its odd lanes; the
    /// multiplication by 1 adds the two of each pair up in 32 bits.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        const Lanes neighbours = _mm256_blend_epi16(pairs, oneLater, 0xAA);
        return _mm256_madd_epi16(neighbours, _mm256_set1_epi16(1));
    }
    /// The odds of the pairs, in 32 bits.
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

    // In 16 bits: floor(s / 2) = (a & b) + ((a ^ b) >> 1) does not overflow and has the sign of
    // s; the lost bit is that of a ^ b. half(s) adds it unless s < 0. quarter(s) is
    // floor(floor(s / 2) / 2), and 1 more where floor(s / 2) is odd, unless s < 0 and s is even.

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) {
        const Lanes floor = floorMean(a, b);
        const Lanes lost = _mm256_andnot_si256(signs(floor), differing(a, b));
        return add(floor, both(lost, all(1)));
    }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) {
        const Lanes floor = floorMean(a, b);
        const Lanes isPositive = _mm256_cmpgt_epi16(floor, all(-1));
        const Lanes lost = both(either(differing(a, b), isPositive), floor);
        return add(halved(floor), both(lost, all(1)));
    }
};

struct IntVec : Vec<int> {
    /// even + next even in the even lanes; the odd lanes do not count. The vector one sample later
    /// has the next evens in its odd lanes.
    QMX_TARGET static Lanes evenSums(Lanes pairs, Lanes oneLater) {
        return add(pairs, _mm256_srli_epi64(oneLater, 32));
    }
    /// The odds stand in the odd lanes; the others do not count.
    QMX_TARGET static Lanes odds(Lanes pairs) { return pairs; }
    /// The value in the even lanes, for the odd samples; 0 for the others.
    QMX_TARGET static Lanes toOdd(Lanes values) { return _mm256_slli_epi64(values, 32); }
    QMX_TARGET static Lanes toEven(Lanes values) { return _mm256_srli_epi64(values, 32); }
    /// p1 .. p4 -> last of before, p1 .. p3
    QMX_TARGET static Lanes pairBefore(Lanes pairs, Lanes before) {
        return _mm256_alignr_epi8(pairs, _mm256_permute2x128_si256(before, pairs, 0x21), 8);
    }

    QMX_TARGET static Lanes halfOfSum(Lanes a, Lanes b) { return halves(add(a, b)); }
    QMX_TARGET static Lanes quarterOfSum(Lanes a, Lanes b) { return quarters(add(a, b)); }
};

#include "wavelet/LiftingKernelsSimd.inl"

}  // namespace

template <class T>
const LiftingKernels<T> LiftingKernels<T>::avx2 = kTable<StepVec<T>>;
template const LiftingKernels<short> LiftingKernels<short>::avx2;
template const LiftingKernels<int> LiftingKernels<int>::avx2;

}  // namespace qmx

#endif
