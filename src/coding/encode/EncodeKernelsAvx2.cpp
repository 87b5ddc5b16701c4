#include "image/CpuLevel.h"

#ifdef QMX_X86

#include <algorithm>

#include "coding/encode/EncodeKernels.h"
#include "coding/encode/WindowCodes.h"
#include "image/LanesAvx2.h"

namespace qmx {
namespace {

using avx2::Vec;

#include "coding/encode/EncodeKernelsSimd.inl"

/// The same number of bits in each byte of `low` and `high`, for values 0 to 31 and 32 to 63.
struct ByteHalves {
    __m256i low;
    __m256i high;
};

/// The four registers hold 64 values of 16 bits.
struct Words {
    __m256i at[4];
};

QMX_TARGET inline std::uint64_t topBits(const ByteHalves& bytes) {
    const auto low = static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes.low));
    const auto high = static_cast<std::uint32_t>(_mm256_movemask_epi8(bytes.high));
    return low | std::uint64_t{high} << 32;
}

/// Returns: the low bytes of 32 values.
QMX_TARGET inline __m256i packBytes(__m256i a, __m256i b) {
    return Vec<short>::inOrder(_mm256_packus_epi16(a, b));
}

QMX_TARGET inline ByteHalves lowBytes(const Words& words) {
    const __m256i mask = _mm256_set1_epi16(0xFF);
    return {packBytes(_mm256_and_si256(words.at[0], mask), _mm256_and_si256(words.at[1], mask)),
            packBytes(_mm256_and_si256(words.at[2], mask), _mm256_and_si256(words.at[3], mask))};
}

QMX_TARGET inline ByteHalves highBytes(const Words& words) {
    return {packBytes(_mm256_srli_epi16(words.at[0], 8), _mm256_srli_epi16(words.at[1], 8)),
            packBytes(_mm256_srli_epi16(words.at[2], 8), _mm256_srli_epi16(words.at[3], 8))};
}

/// Stores the bits 0 to count - 1 of 64 bytes. movemask takes the top bit of each byte, so the bit
/// that is wanted is shifted there; bits that cross into the next byte never get that far.
QMX_TARGET inline void sliceBytes(const ByteHalves& bytes, int count, std::uint64_t* bits) {
    const __m128i start = _mm_cvtsi32_si128(8 - count);
    ByteHalves shifted{_mm256_sll_epi16(bytes.low, start), _mm256_sll_epi16(bytes.high, start)};
    for (int i = count - 1; i >= 0; --i) {
        bits[i] = topBits(shifted);
        shifted = {_mm256_add_epi8(shifted.low, shifted.low),
                   _mm256_add_epi8(shifted.high, shifted.high)};
    }
}

/// Stores the bits 0 to count - 1 of 64 values of 16 bits.
QMX_TARGET inline void sliceWords(const Words& words, int count, std::uint64_t* bits) {
    sliceBytes(lowBytes(words), count < 8 ? count : 8, bits);
    if (count > 8) sliceBytes(highBytes(words), count - 8, bits + 8);
}

QMX_TARGET inline void slice(const short* folded, int count, std::uint64_t* bits) {
    Words words;
    for (std::size_t i = 0; i < 4; ++i)
        words.at[i] = positive(folded, i);
    sliceWords(words, count, bits);
}

QMX_TARGET inline void slice(const int* folded, int count, std::uint64_t* bits) {
    Words low;
    Words high;
    for (std::size_t i = 0; i < 4; ++i) {
        const __m256i a = positive(folded, 2 * i);
        const __m256i b = positive(folded, 2 * i + 1);
        low.at[i] = Vec<short>::evensOf(a, b);
        high.at[i] = Vec<short>::oddsOf(a, b);
    }
    sliceWords(low, count < 16 ? count : 16, bits);
    if (count > 16) sliceWords(high, count - 16, bits + 16);
}

template <class T>
struct Slices {
    QMX_TARGET Slices(const T* folded, std::uint32_t any) { slice(folded, bitLength(any), bits); }
    QMX_TARGET std::uint64_t plane(int i) const { return bits[i]; }

    std::uint64_t bits[8 * sizeof(T)];
};

/// Appends the events among the candidates of an n section. Requires: candidates is not 0; bit i of
/// signs is the sign of event i.
///
/// Plain way: one event after the other, each a run code and a sign. Most runs are short, so the
/// events behind the first one come from a table of all patterns of kWindowBits candidates: it holds
/// what the plain way would append, with gaps for the signs, which one pdep fills.
QMX_TARGET inline void appendEvents(ByteBatch& section, std::uint64_t run, std::uint64_t candidates,
                                    std::uint64_t signs) {
    ByteBatch batch = section;
    for (;;) {
        const auto zeros = static_cast<std::uint64_t>(_tzcnt_u64(candidates));
        run += zeros;
        candidates = candidates >> zeros >> 1;
        std::uint64_t codes = 0;
        std::uint64_t bits = 0;
        if (run < kShortRuns) [[likely]] {
            const RunWord first = kRunWords[run];
            codes = first.code | (signs & 1) << first.bits;
            bits = first.bits + 1;
        } else {
            appendEvent(batch, run, signs & 1);
        }
        signs >>= 1;
        const CWindowCode window = kWindowCodes[candidates & lowBits(kWindowBits)];
        codes |= (window.codes() | _pdep_u64(signs, window.signSlots())) << bits;
        batch.append(codes, bits + window.bits());
        candidates >>= window.passed();
        signs >>= window.events();
        if (candidates == 0) break;
        run = 0;
    }
    section = batch;
}

QMX_TARGET inline void takeNew(OrderSections& order, int p, std::uint64_t fresh,
                               std::uint64_t above, std::uint64_t negative) {
    order.makeRoomForRuns(p);
    PlaneSections& sections = order.bitPlanes[p];
    const std::uint64_t candidates = extract(fresh, ~above);
    appendEvents(sections.significance, sections.run(order.position), candidates,
                 extract(negative, fresh));
    sections.coded =
        order.position - sections.excluded + static_cast<unsigned>(bitLength(candidates));
    sections.newCount += countOnes(fresh);
}

#include "coding/encode/EncodeGroups.inl"

template <class T>
constexpr EncodeKernels<T> kTable{encodeGroups<T>, keptNothing};

}  // namespace

template <class T>
const EncodeKernels<T> EncodeKernels<T>::avx2 = kTable<T>;
template const EncodeKernels<short> EncodeKernels<short>::avx2;
template const EncodeKernels<int> EncodeKernels<int>::avx2;

}  // namespace qmx

#endif
