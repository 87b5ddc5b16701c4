#include <bit>
#include <immintrin.h>

#include "coding/encode/FoldKernels.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

template <class T>
struct Vec;

template <>
struct Vec<short> {
    QMX_TARGET static __m256i set(short x) { return _mm256_set1_epi16(x); }
    QMX_TARGET static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
    QMX_TARGET static __m256i subtract(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
    QMX_TARGET static __m256i signs(__m256i a) { return _mm256_srai_epi16(a, 15); }
    QMX_TARGET static __m256i greater(__m256i a, __m256i b) { return _mm256_cmpgt_epi16(a, b); }
    QMX_TARGET static __m256i equal(__m256i a, __m256i b) { return _mm256_cmpeq_epi16(a, b); }
    /// Sixteen pairs: the packs work on each 128-bit half by itself, so the quarters a0 b0 a1 b1 of
    /// the result go to a0 a1 b0 b1.
    QMX_TARGET static __m256i even(__m256i a, __m256i b) {
        const __m256i low = _mm256_set1_epi32(0xFFFF);
        return inOrder(_mm256_packus_epi32(_mm256_and_si256(a, low), _mm256_and_si256(b, low)));
    }
    QMX_TARGET static __m256i odd(__m256i a, __m256i b) {
        return inOrder(_mm256_packus_epi32(_mm256_srli_epi32(a, 16), _mm256_srli_epi32(b, 16)));
    }
    QMX_TARGET static __m256i inOrder(__m256i a) { return _mm256_permute4x64_epi64(a, 0xD8); }
};

template <>
struct Vec<int> {
    QMX_TARGET static __m256i set(int x) { return _mm256_set1_epi32(x); }
    QMX_TARGET static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }
    QMX_TARGET static __m256i subtract(__m256i a, __m256i b) { return _mm256_sub_epi32(a, b); }
    QMX_TARGET static __m256i signs(__m256i a) { return _mm256_srai_epi32(a, 31); }
    QMX_TARGET static __m256i greater(__m256i a, __m256i b) { return _mm256_cmpgt_epi32(a, b); }
    QMX_TARGET static __m256i equal(__m256i a, __m256i b) { return _mm256_cmpeq_epi32(a, b); }
    /// As for short.
    QMX_TARGET static __m256i even(__m256i a, __m256i b) { return picked<0x88>(a, b); }
    QMX_TARGET static __m256i odd(__m256i a, __m256i b) { return picked<0xDD>(a, b); }
    template <int Lanes>
    QMX_TARGET static __m256i picked(__m256i a, __m256i b) {
        const __m256 both =
            _mm256_shuffle_ps(_mm256_castsi256_ps(a), _mm256_castsi256_ps(b), Lanes);
        return _mm256_permute4x64_epi64(_mm256_castps_si256(both), 0xD8);
    }
};

template <class T>
constexpr std::size_t kLanes = sizeof(__m256i) / sizeof(T);

template <class T>
QMX_TARGET inline __m256i load(const T* values) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(values));
}

template <class T>
QMX_TARGET inline void store(T* values, __m256i lanes) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(values), lanes);
}

template <class T>
QMX_TARGET inline T unionOf(__m256i all) {
    alignas(__m256i) T lanes[kLanes<T>];
    store(lanes, all);
    T bits = 0;
    for (const T lane : lanes)
        bits = static_cast<T>(bits | lane);
    return bits;
}

/// Plain way: fold(x) = 2 |x| + (x < 0). With s = -1 for negative x and 0 for others, |x| is
/// (x ^ s) - s, so that fold(x) = 2 ((x ^ s) - s) - s, in wrapping lanes.
template <class T>
QMX_TARGET void foldRow(const T* row, std::size_t count, T* out, FoldedUnion<T>& all) {
    using V = Vec<T>;
    __m256i bits = _mm256_setzero_si256();
    std::size_t i = 0;
    for (; i + kLanes<T> <= count; i += kLanes<T>) {
        const __m256i x = load(row + i);
        const __m256i s = V::signs(x);
        const __m256i magnitude = V::subtract(_mm256_xor_si256(x, s), s);
        const __m256i folded = V::subtract(V::add(magnitude, magnitude), s);
        store(out + i, folded);
        bits = _mm256_or_si256(bits, folded);
        const __m256i isZero = V::equal(x, _mm256_setzero_si256());
        const __m256i lost = _mm256_andnot_si256(isZero, V::greater(V::set(2), folded));
        if (_mm256_testz_si256(lost, lost) == 0) [[unlikely]] {
            const auto bytes = static_cast<unsigned>(_mm256_movemask_epi8(lost));
            all.lost += static_cast<unsigned>(std::popcount(bytes)) / sizeof(T);
        }
    }
    all.bits = static_cast<T>(all.bits | unionOf<T>(bits));
    kFoldScalar.of<T>().fold(row + i, count - i, out + i, all);
}

template <class T>
QMX_TARGET void splitRow(const T* row, std::size_t pairs, T* even, T* odd) {
    std::size_t i = 0;
    for (; i + kLanes<T> <= pairs; i += kLanes<T>) {
        const __m256i a = load(row + 2 * i);
        const __m256i b = load(row + 2 * i + kLanes<T>);
        store(even + i, Vec<T>::even(a, b));
        store(odd + i, Vec<T>::odd(a, b));
    }
    kFoldScalar.of<T>().split(row + 2 * i, pairs - i, even + i, odd + i);
}

}  // namespace

const KernelTables<FoldKernels> kFoldAvx2{{foldRow<short>, splitRow<short>},
                                          {foldRow<int>, splitRow<int>}};

}  // namespace qmx
