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

/// The bits of eight planes stand in a byte of each coefficient until all are there, so that a plane takes as long for
/// ints as for shorts: photographs of 16 bits take 0.94 of the time with AVX-512, 0.83 with AVX2 (2026-11-22).
template <class T>
struct Lanes {
    QMX_TARGET explicit Lanes(int topPlane) : top(topPlane) {
        for (auto& v : byte)
            v = Bytes::zero();
        for (auto& planes : bytes)
            for (auto& v : planes)
                v = Bytes::zero();
    }
    QMX_TARGET void shiftIn(std::uint64_t mask, int p) {
        for (std::size_t i = 0; i < kByteVectors; ++i)
            byte[i] = Bytes::twiceAndBits(byte[i], mask >> (i * Bytes::kSamples));
        if (p % 8 != 0) return;
        for (std::size_t i = 0; i < kByteVectors; ++i) {
            bytes[p / 8][i] = byte[i];
            byte[i] = Bytes::zero();
        }
    }
    QMX_TARGET void store(T* out, std::uint64_t negatives) const {
        Lane lanes[kVectors];
        withSigns(lanes, negatives);
        for (std::size_t i = 0; i < kVectors; ++i)
            V::store(out + i * V::kSamples, lanes[i]);
    }
    QMX_TARGET void storeApart(T* evens, T* odds, std::uint64_t negatives) const {
        Lane lanes[kVectors];
        withSigns(lanes, negatives);
        for (std::size_t i = 0; i < kVectors; i += 2) {
            V::store(evens + i / 2 * V::kSamples, V::evensOf(lanes[i], lanes[i + 1]));
            V::store(odds + i / 2 * V::kSamples, V::oddsOf(lanes[i], lanes[i + 1]));
        }
    }

private:
    using V = Vec<T>;
    using Shorts = Vec<short>;
    using Bytes = Vec<unsigned char>;
    using Lane = typename V::Lanes;
    static constexpr std::size_t kVectors = kGroupSize / V::kSamples;
    static constexpr std::size_t kByteVectors = kGroupSize / Bytes::kSamples;

    /// Joins two bytes of all coefficients, from byte `low` on, to 2 kByteVectors vectors of shorts.
    QMX_TARGET void joinBytes(Lane* shorts, std::size_t low) const {
        for (std::size_t i = 0; i < kByteVectors; ++i)
            Bytes::zip(bytes[low][i], bytes[low + 1][i], shorts + 2 * i);
    }
    QMX_TARGET void joinAll(Lane* lanes) const {
        if constexpr (std::is_same_v<T, short>) {
            joinBytes(lanes, 0);
        } else {
            constexpr std::size_t kShortVectors = 2 * kByteVectors;
            Lane low[kShortVectors];
            joinBytes(low, 0);
            if (top < 16) {
                for (std::size_t i = 0; i < kVectors; ++i)
                    lanes[i] =
                        V::widened(i % 2 == 0 ? V::lowHalf(low[i / 2]) : V::highHalf(low[i / 2]));
                return;
            }
            Lane high[kShortVectors];
            joinBytes(high, 2);
            for (std::size_t i = 0; i < kShortVectors; ++i)
                Shorts::zip(low[i], high[i], lanes + 2 * i);
        }
    }
    QMX_TARGET void withSigns(Lane* lanes, std::uint64_t negatives) const {
        joinAll(lanes);
        for (std::size_t i = 0; i < kVectors; ++i)
            lanes[i] = V::negatedWhere(lanes[i], negatives >> (i * V::kSamples));
    }

    int top;
    /// The bits of the byte that is being shifted in, and those of each byte.
    typename Bytes::Lanes byte[kByteVectors];
    typename Bytes::Lanes bytes[sizeof(T)][kByteVectors];
};

/// The same function for all lengths: calls of another one take longer.
template <class T>
QMX_TARGET inline void copyShort(const T* from, int count, T* to) {
    if constexpr (Vec<T>::kHasMasks) {
        constexpr auto kStep = static_cast<int>(Vec<T>::kSamples);
        for (; count > 0; count -= kStep, from += kStep, to += kStep) {
            const auto samples = static_cast<std::size_t>(std::min(count, kStep));
            Vec<T>::storeFirst(to, Vec<T>::loadFirst(from, samples), samples);
        }
    } else {
        std::copy_n(from, count, to);
    }
}

#include "coding/decode/DecodeKernelsBody.inl"
