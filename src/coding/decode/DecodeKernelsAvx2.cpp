#include <algorithm>
#include <bit>
#include <cstring>
#include <immintrin.h>

#include "coding/decode/DecodeKernels.h"
#include "coding/decode/WindowRefill.h"

#define QMX_TARGET QMX_TARGET_AVX2

namespace qmx {
namespace {

constexpr auto* kRefillWindows = refillWindowsAvx2;

QMX_TARGET inline int countOnes(std::uint64_t mask) {
    return static_cast<int>(_mm_popcnt_u64(mask));
}

QMX_TARGET inline std::uint64_t deposit(std::uint64_t bits, std::uint64_t mask) {
    return _pdep_u64(bits, mask);
}

QMX_TARGET inline __m256i* vectorAt(void* place) {
    return static_cast<__m256i*>(place);
}

/// The lanes of the two coefficient types.
template <class T>
struct Vec;

template <>
struct Vec<short> {
    /// Returns: -1 in the lanes whose bit is set.
    QMX_TARGET static __m256i spread(std::uint64_t bits) {
        const __m256i select = _mm256_setr_epi16(1, 2, 4, 8, 16, 32, 64, 128, 256, 512, 1024, 2048,
                                                 4096, 8192, 16384, -32768);
        const __m256i all = _mm256_set1_epi16(static_cast<short>(bits));
        return _mm256_cmpeq_epi16(_mm256_and_si256(all, select), select);
    }
    QMX_TARGET static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi16(a, b); }
    QMX_TARGET static __m256i sub(__m256i a, __m256i b) { return _mm256_sub_epi16(a, b); }
    /// Replaces the elements 0, 2, 4, ... of a place by the lanes of half a vector.
    QMX_TARGET static void storeToEven(short* out, __m128i half) {
        const __m256i odd = _mm256_loadu_si256(vectorAt(out));
        const __m256i even = _mm256_cvtepu16_epi32(half);
        _mm256_storeu_si256(vectorAt(out), _mm256_blend_epi16(even, odd, 0xAA));
    }
};

template <>
struct Vec<int> {
    QMX_TARGET static __m256i spread(std::uint64_t bits) {
        const __m256i select = _mm256_setr_epi32(1, 2, 4, 8, 16, 32, 64, 128);
        const __m256i all = _mm256_set1_epi32(static_cast<int>(bits));
        return _mm256_cmpeq_epi32(_mm256_and_si256(all, select), select);
    }
    QMX_TARGET static __m256i add(__m256i a, __m256i b) { return _mm256_add_epi32(a, b); }
    QMX_TARGET static __m256i sub(__m256i a, __m256i b) { return _mm256_sub_epi32(a, b); }
    QMX_TARGET static void storeToEven(int* out, __m128i half) {
        const __m256i odd = _mm256_loadu_si256(vectorAt(out));
        const __m256i even = _mm256_cvtepu32_epi64(half);
        _mm256_storeu_si256(vectorAt(out), _mm256_blend_epi32(even, odd, 0xAA));
    }
};

template <class T>
struct Lanes {
    static constexpr int kLanes = 32 / static_cast<int>(sizeof(T));
    static constexpr int kVectors = kGroupSize / kLanes;

    QMX_TARGET Lanes() {
        for (auto& v : vectors)
            v = _mm256_setzero_si256();
    }
    QMX_TARGET void shiftIn(std::uint64_t mask) {
        for (int i = 0; i < kVectors; ++i)
            vectors[i] = Vec<T>::sub(Vec<T>::add(vectors[i], vectors[i]),
                                     Vec<T>::spread(mask >> (i * kLanes)));
    }
    /// Returns: the coefficients of a vector: (v ^ -1) - -1 is -v.
    QMX_TARGET __m256i withSigns(int i, std::uint64_t negatives) const {
        const __m256i negative = Vec<T>::spread(negatives >> (i * kLanes));
        return Vec<T>::sub(_mm256_xor_si256(vectors[i], negative), negative);
    }
    QMX_TARGET void store(T* out, std::uint64_t negatives) const {
        for (int i = 0; i < kVectors; ++i)
            _mm256_storeu_si256(vectorAt(out + i * kLanes), withSigns(i, negatives));
    }
    QMX_TARGET void storeToEven(T* out, std::uint64_t negatives) const {
        for (int i = 0; i < kVectors; ++i) {
            const __m256i v = withSigns(i, negatives);
            Vec<T>::storeToEven(out + 2 * i * kLanes, _mm256_castsi256_si128(v));
            Vec<T>::storeToEven(out + (2 * i + 1) * kLanes, _mm256_extracti128_si256(v, 1));
        }
    }

    __m256i vectors[std::size_t{kVectors}];
};

#include "coding/decode/DecodeKernelsBody.inl"

}  // namespace

const KernelTables<DecodeKernels> kDecodeAvx2{{decodeLine<short>}, {decodeLine<int>}};

}  // namespace qmx
