#include "coding/encode/EncodeKernels.h"

#include <algorithm>
#include <bit>

#include "coding/encode/WindowCodes.h"

namespace qmx {
namespace {

/// Returns: the 8 x 8 bits of a word, a row in each byte, with rows and columns exchanged. Squares of
/// 1, 2 and 4 bits beside the diagonal change places.
constexpr std::uint64_t transposed(std::uint64_t x) {
    std::uint64_t t = (x ^ x >> 7) & 0x00AA00AA00AA00AA;
    x ^= t ^ t << 7;
    t = (x ^ x >> 14) & 0x0000CCCC0000CCCC;
    x ^= t ^ t << 14;
    t = (x ^ x >> 28) & 0x00000000F0F0F0F0;
    return x ^ t ^ t << 28;
}
static_assert(transposed(0x0000000000000003) == 0x0000000000000101);
static_assert(transposed(0x8000000000000000) == 0x8000000000000000);

/// Stores bit i of one byte of 8 values as byte `eighth` of bits[i]. Plain way: 64 single bits.
template <class T>
void sliceByte(const T* values, std::size_t byte, std::size_t eighth, std::uint64_t* bits) {
    std::uint64_t rows = 0;
    for (int i = 0; i < 8; ++i)
        rows |= static_cast<std::uint64_t>((std::max(values[i], T{0}) >> (8 * byte)) & 0xFF)
                << (8 * i);
    rows = transposed(rows);
    for (int i = 0; i < 8; ++i)
        reinterpret_cast<unsigned char*>(bits + i)[eighth] =
            static_cast<unsigned char>(rows >> (8 * i));
}

template <class T>
std::uint32_t unionOf(const T* folded) {
    T all = 0;
    for (std::size_t i = 0; i < kGroupSize; ++i)
        all = static_cast<T>(all | std::max(folded[i], T{0}));
    return static_cast<std::uint32_t>(all);
}

template <class T>
struct Slices {
    Slices(const T* folded, std::uint32_t any) {
        const auto planes = static_cast<std::size_t>(bitLength(any));
        for (std::size_t byte = 0; 8 * byte < planes; ++byte)
            for (std::size_t eighth = 0; eighth < 8; ++eighth)
                sliceByte(folded + 8 * eighth, byte, eighth, bits + 8 * byte);
    }
    std::uint64_t plane(int i) const { return bits[i]; }

    std::uint64_t bits[8 * sizeof(T)];
};

/// Plain way: one bit after the other. Here all selected bits move down at once, by 1, 2, 4, .. 32
/// places, each of them in the steps whose sum is the number of bits below it that are not selected.
std::uint64_t extract(std::uint64_t bits, std::uint64_t mask) {
    bits &= mask;
    std::uint64_t unselected = ~mask << 1;
    for (int step = 1; step < kWordBits; step *= 2) {
        // Bit i of parity: whether the count of unselected bits below i is odd.
        std::uint64_t parity = unselected;
        for (int shift = 1; shift < kWordBits; shift *= 2)
            parity ^= parity << shift;
        const std::uint64_t moving = parity & mask;
        mask = (mask ^ moving) | moving >> step;
        const std::uint64_t moved = bits & moving;
        bits = (bits ^ moved) | moved >> step;
        unselected &= ~parity;
    }
    return bits;
}

/// Plain way: one bit after the other. Sums of 2, 4 and 8 bits side by side, then all bytes at once;
/// without a target attribute the compiler would call a function for it.
constexpr std::uint64_t countOnes(std::uint64_t x) {
    x -= x >> 1 & 0x5555555555555555;
    x = (x & 0x3333333333333333) + (x >> 2 & 0x3333333333333333);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0F;
    return (x * 0x0101010101010101) >> 56;
}
static_assert(countOnes(~std::uint64_t{0}) == 64 && countOnes(0x8000000000000101) == 3);

/// One event after the other; its candidates are counted, not moved together, since most groups
/// have few events in a plane.
void takeNew(OrderSections& order, int p, std::uint64_t fresh, std::uint64_t above,
             std::uint64_t negative) {
    order.makeRoomForRuns(p);
    PlaneSections& sections = order.bitPlanes[p];
    ByteBatch batch = sections.significance;
    std::uint64_t run = sections.run(order.position);
    std::uint64_t passed = 0;
    sections.newCount += countOnes(fresh);
    for (; fresh != 0; fresh &= fresh - 1, run = 0) {
        const std::uint64_t below = (fresh & (std::uint64_t{0} - fresh)) - 1;
        const std::uint64_t index = countOnes(~above & below);
        const std::uint64_t sign = (negative & (below + 1)) != 0 ? 1 : 0;
        run += index - passed;
        passed = index + 1;
        if (run < kShortRuns) {
            const RunWord word = kRunWords[static_cast<std::size_t>(run)];
            batch.append(word.code | sign << word.bits, word.bits + 1);
        } else {
            appendEvent(batch, run, sign);
        }
    }
    sections.significance = batch;
    sections.coded = order.position - sections.excluded + passed;
}

#define QMX_TARGET
#include "coding/encode/EncodeGroups.inl"

template <class T>
constexpr EncodeKernels<T> kTable{encodeGroups<T>, keptNothing};

}  // namespace

template <class T>
const EncodeKernels<T> EncodeKernels<T>::scalar = kTable<T>;
template const EncodeKernels<short> EncodeKernels<short>::scalar;
template const EncodeKernels<int> EncodeKernels<int>::scalar;

}  // namespace qmx
