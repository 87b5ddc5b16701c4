#include "coding/decode/DecodeKernels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstring>
#include <limits>
#include <type_traits>
#include <utility>

#include "coding/decode/RunLookUp.h"

#define QMX_TARGET

namespace qmx {
namespace {

#include "coding/decode/WindowRefill.inl"

constexpr auto* kRefillWindows = refill;
// An empty bit plane takes longer than asking for it.
constexpr std::uint32_t kSteadyShare = 1;

inline int countOnes(std::uint64_t mask) {
    return std::popcount(mask);
}

/// Deposits of a few bits: the result for each mask and bits, and the number of ones of each mask.
constexpr int kDepositBits = 6;
constexpr unsigned kDepositMasks = 1U << kDepositBits;

struct DepositTable {
    unsigned char placed[kDepositMasks][kDepositMasks];
    unsigned char ones[kDepositMasks];
};

constexpr DepositTable makeDepositTable() {
    DepositTable table{};
    for (unsigned mask = 0; mask < kDepositMasks; ++mask) {
        table.ones[mask] = static_cast<unsigned char>(std::popcount(mask));
        for (unsigned bits = 0; bits < kDepositMasks; ++bits) {
            unsigned placed = 0;
            unsigned left = bits;
            for (unsigned ones = mask; ones != 0; ones &= ones - 1, left >>= 1)
                placed |= (left & 1) != 0 ? ones & (0U - ones) : 0;
            table.placed[mask][bits] = static_cast<unsigned char>(placed);
        }
    }
    return table;
}

constexpr DepositTable kDeposit = makeDepositTable();

inline std::uint64_t deposit(std::uint64_t bits, std::uint64_t mask) {
    if (mask == ~std::uint64_t{0}) return bits;
    std::uint64_t placed = 0;
    for (int shift = 0; shift < kGroupSize; shift += kDepositBits) {
        const std::uint64_t part = (mask >> shift) % kDepositMasks;
        placed |= std::uint64_t{kDeposit.placed[part][bits % kDepositMasks]} << shift;
        bits >>= kDeposit.ones[part];
    }
    return placed;
}

/// For each byte the word whose byte i is bit i of it.
constexpr auto makeSpreadTable() {
    std::array<std::uint64_t, 256> table{};
    for (unsigned byte = 0; byte < table.size(); ++byte)
        for (int i = 0; i < 8; ++i)
            table[byte] |= std::uint64_t{byte >> i & 1} << (8 * i);
    return table;
}

constexpr auto kSpread = makeSpreadTable();

template <class T>
struct Lanes {
    using Unsigned = std::make_unsigned_t<T>;

    explicit Lanes(int topPlane) : top(topPlane) {}

    void shiftIn(std::uint64_t mask, int p) { planes[p] = mask; }

    /// Sets bytes[i] to the bits of coefficient i in the eight planes from `lowest` on.
    void gatherBytes(int lowest, unsigned char* bytes) const {
        for (int first = 0; first < kGroupSize; first += 8) {
            std::uint64_t word = 0;
            for (int p = std::min(lowest + 7, top); p >= lowest; --p)
                word = 2 * word + kSpread[(planes[p] >> first) % 256];
            storeWord(bytes + first, word);
        }
    }

    void store(T* out, std::uint64_t negatives) const {
        Unsigned magnitudes[kGroupSize] = {};
        unsigned char bytes[kGroupSize];
        for (int p = 0; p <= top; p += 8) {
            gatherBytes(p, bytes);
            for (int i = 0; i < kGroupSize; ++i)
                magnitudes[i] =
                    static_cast<Unsigned>(magnitudes[i] | static_cast<Unsigned>(bytes[i]) << p);
        }
        for (int first = 0; first < kGroupSize; first += 8)
            storeWord(bytes + first, kSpread[(negatives >> first) % 256]);
        for (int i = 0; i < kGroupSize; ++i) {
            const auto negative = static_cast<Unsigned>(0U - bytes[i]);
            out[i] = static_cast<T>((magnitudes[i] ^ negative) - negative);
        }
    }

    void storeApart(T* evens, T* odds, std::uint64_t negatives) const {
        T all[kGroupSize];
        store(all, negatives);
        for (int i = 0; i < kGroupSize / 2; ++i) {
            evens[i] = all[2 * i];
            odds[i] = all[2 * i + 1];
        }
    }

    int top;
    std::uint64_t planes[kTableBitPlanes<T>];
};

template <class T>
void copyShort(const T* from, int count, T* to) {
    std::copy_n(from, count, to);
}

#include "coding/decode/DecodeKernelsBody.inl"

}  // namespace

template <class T>
const DecodeKernels<T> DecodeKernels<T>::scalar = kTable<T>;
template const DecodeKernels<short> DecodeKernels<short>::scalar;
template const DecodeKernels<int> DecodeKernels<int>::scalar;

}  // namespace qmx
