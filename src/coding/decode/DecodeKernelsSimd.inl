// What DecodeKernelsBody.inl asks for, on vectors, for the files DecodeKernels<level>.cpp. Requires before
// it: the Vec of the level, with QMX_TARGET.

constexpr auto* kRefillWindows = refillWindowsAvx2;
// 2 and 8 take 1.01 and 1.00 times as long for photographs of 8 bits (2026-11-22).
constexpr std::uint32_t kSteadyShare = 4;

QMX_TARGET inline int countOnes(std::uint64_t mask) {
    return static_cast<int>(_mm_popcnt_u64(mask));
}

QMX_TARGET inline std::uint64_t deposit(std::uint64_t bits, std::uint64_t mask) {
    return _pdep_u64(bits, mask);
}

template <class T>
struct Lanes {
    using V = Vec<T>;
    static constexpr std::size_t kVectors = kGroupSize / V::kSamples;

    QMX_TARGET Lanes() {
        for (auto& v : vectors)
            v = V::zero();
    }
    QMX_TARGET void shiftIn(std::uint64_t mask) {
        for (std::size_t i = 0; i < kVectors; ++i)
            vectors[i] = V::twiceAndBits(vectors[i], mask >> (i * V::kSamples));
    }
    QMX_TARGET typename V::Lanes withSigns(std::size_t i, std::uint64_t negatives) const {
        return V::negatedWhere(vectors[i], negatives >> (i * V::kSamples));
    }
    QMX_TARGET void store(T* out, std::uint64_t negatives) const {
        for (std::size_t i = 0; i < kVectors; ++i)
            V::store(out + i * V::kSamples, withSigns(i, negatives));
    }
    QMX_TARGET void storeToEven(T* out, std::uint64_t negatives) const {
        for (std::size_t i = 0; i < kVectors; ++i, out += 2 * V::kSamples) {
            const auto v = withSigns(i, negatives);
            V::putEvens(out, V::lowHalf(v));
            V::putEvens(out + V::kSamples, V::highHalf(v));
        }
    }

    typename V::Lanes vectors[kVectors];
};

#include "coding/decode/DecodeKernelsBody.inl"
