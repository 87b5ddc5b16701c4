#include <algorithm>
#include <bit>
#include <cstring>
#include <immintrin.h>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/WindowRefill.h"

#define QMX_TARGET QMX_TARGET_AVX512

namespace qmx {
namespace {

constexpr auto* kRefillWindows = refillWindowsAvx2;

QMX_TARGET inline int countOnes(std::uint64_t mask) {
    return static_cast<int>(_mm_popcnt_u64(mask));
}

QMX_TARGET inline std::uint64_t deposit(std::uint64_t bits, std::uint64_t mask) {
    return _pdep_u64(bits, mask);
}

// Where g++ 12 warns of its own undefined vectors, the form with a mask of all lanes stands.

/// The lanes of the two coefficient types.
template <class T>
struct Vec;

template <>
struct Vec<short> {
    QMX_TARGET static __m512i twice(__m512i v) { return _mm512_add_epi16(v, v); }
    /// Returns: v - term in the lanes whose bit is set, other elsewhere.
    QMX_TARGET static __m512i subWhere(__m512i other, std::uint64_t bits, __m512i v, __m512i term) {
        return _mm512_mask_sub_epi16(other, static_cast<__mmask32>(bits), v, term);
    }
    /// Replaces the elements 0, 2, 4, ... of a place by the lanes of half a vector.
    QMX_TARGET static void storeToEven(short* out, __m256i half) {
        _mm512_mask_storeu_epi16(out, 0x55555555, _mm512_maskz_cvtepu16_epi32(0xFFFF, half));
    }
};

template <>
struct Vec<int> {
    QMX_TARGET static __m512i twice(__m512i v) { return _mm512_add_epi32(v, v); }
    QMX_TARGET static __m512i subWhere(__m512i other, std::uint64_t bits, __m512i v, __m512i term) {
        return _mm512_mask_sub_epi32(other, static_cast<__mmask16>(bits), v, term);
    }
    QMX_TARGET static void storeToEven(int* out, __m256i half) {
        _mm512_mask_storeu_epi32(out, 0x5555, _mm512_maskz_cvtepu32_epi64(0xFF, half));
    }
};

template <class T>
struct Lanes {
    static constexpr int kLanes = 64 / static_cast<int>(sizeof(T));
    static constexpr int kVectors = kGroupSize / kLanes;

    QMX_TARGET Lanes() {
        for (auto& v : vectors)
            v = _mm512_setzero_si512();
    }
    QMX_TARGET void shiftIn(std::uint64_t mask) {
        for (int i = 0; i < kVectors; ++i) {
            const __m512i twice = Vec<T>::twice(vectors[i]);
            vectors[i] =
                Vec<T>::subWhere(twice, mask >> (i * kLanes), twice, _mm512_set1_epi32(-1));
        }
    }
    QMX_TARGET __m512i withSigns(int i, std::uint64_t negatives) const {
        return Vec<T>::subWhere(vectors[i], negatives >> (i * kLanes), _mm512_setzero_si512(),
                                vectors[i]);
    }
    QMX_TARGET void store(T* out, std::uint64_t negatives) const {
        for (int i = 0; i < kVectors; ++i)
            _mm512_storeu_si512(out + i * kLanes, withSigns(i, negatives));
    }
    QMX_TARGET void storeToEven(T* out, std::uint64_t negatives) const {
        for (int i = 0; i < kVectors; ++i) {
            const __m512i v = withSigns(i, negatives);
            Vec<T>::storeToEven(out + 2 * i * kLanes, _mm512_maskz_extracti64x4_epi64(0xF, v, 0));
            Vec<T>::storeToEven(out + (2 * i + 1) * kLanes,
                                _mm512_maskz_extracti64x4_epi64(0xF, v, 1));
        }
    }

    __m512i vectors[std::size_t{kVectors}];
};

#include "coding/decode/DecodeKernelsBody.inl"

}  // namespace

const KernelTables<DecodeKernels> kDecodeAvx512{{decodeLine<short>}, {decodeLine<int>}};

}  // namespace qmx
