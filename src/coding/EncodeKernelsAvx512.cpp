#include <algorithm>
#include <array>
#include <bit>
#include <immintrin.h>

#include "coding/EncodeKernels.h"
#include "coding/RunTables.h"

#define QMX_TARGET QMX_TARGET_AVX512

namespace qmx {
namespace {

QMX_TARGET inline std::uint64_t extract(std::uint64_t bits, std::uint64_t mask) {
    return _pext_u64(bits, mask);
}

QMX_TARGET inline std::uint64_t countOnes(std::uint64_t bits) {
    return static_cast<std::uint64_t>(_mm_popcnt_u64(bits));
}

/// Returns: the lower or the upper half. The form without a mask warns with g++ 12.
template <int Index>
QMX_TARGET inline __m256i half(__m512i v) {
    return _mm512_maskz_extracti64x4_epi64(0xFF, v, Index);
}

/// The lanes of the two types of folded values.
template <class T>
struct Vec;

template <>
struct Vec<short> {
    QMX_TARGET static __m512i positive(__m512i values) {
        return _mm512_maskz_max_epi16(~__mmask32{0}, values, _mm512_setzero_si512());
    }
    QMX_TARGET static std::uint64_t bits(__m512i values, int index) {
        return _mm512_test_epi16_mask(values, _mm512_set1_epi16(static_cast<short>(1U << index)));
    }
    QMX_TARGET static std::uint32_t joined(std::uint64_t lanes) {
        lanes |= lanes >> 32;
        return (lanes | lanes >> 16) & 0xFFFF;
    }
};

template <>
struct Vec<int> {
    QMX_TARGET static __m512i positive(__m512i values) {
        return _mm512_maskz_max_epi32(0xFFFF, values, _mm512_setzero_si512());
    }
    QMX_TARGET static std::uint64_t bits(__m512i values, int index) {
        return _mm512_test_epi32_mask(values, _mm512_set1_epi32(static_cast<int>(1U << index)));
    }
    QMX_TARGET static std::uint32_t joined(std::uint64_t lanes) {
        return static_cast<std::uint32_t>(lanes | lanes >> 32);
    }
};

/// Keeps the values in registers: a bit plane is one test of all lanes.
template <class T>
struct Slices {
    static constexpr int kLanes = 64 / static_cast<int>(sizeof(T));
    static constexpr int kVectors = static_cast<int>(sizeof(T));

    QMX_TARGET explicit Slices(const T* folded) {
        __m512i all = _mm512_setzero_si512();
        for (int i = 0; i < kVectors; ++i) {
            values[i] = Vec<T>::positive(_mm512_loadu_si512(folded + i * kLanes));
            all = _mm512_or_si512(all, values[i]);
        }
        const __m256i four = _mm256_or_si256(half<0>(all), half<1>(all));
        const __m128i two =
            _mm_or_si128(_mm256_castsi256_si128(four), _mm256_extracti128_si256(four, 1));
        const __m128i one = _mm_or_si128(two, _mm_unpackhi_epi64(two, two));
        any = Vec<T>::joined(static_cast<std::uint64_t>(_mm_cvtsi128_si64(one)));
    }
    QMX_TARGET std::uint64_t plane(int index) const {
        std::uint64_t word = 0;
        for (int i = 0; i < kVectors; ++i)
            word |= Vec<T>::bits(values[i], index) << (i * kLanes);
        return word;
    }

    std::uint32_t any;
    __m512i values[std::size_t{kVectors}];
};

/// Events that are coded together.
constexpr std::size_t kBlockEvents = 32;
/// Runs whose codes are looked up: six bits index two vectors of 16-bit lanes.
constexpr int kTableRuns = 64;
/// A table entry is the code of a run below its length.
constexpr int kTableCodeBits = 12;

alignas(64) constexpr auto kTableCodes = [] {
    std::array<std::uint16_t, kTableRuns> entries{};
    for (std::uint32_t run = 0; run < kTableRuns; ++run) {
        const RunWord word = runWord(run);
        entries[run] = static_cast<std::uint16_t>(word.code | word.bits << kTableCodeBits);
    }
    return entries;
}();
static_assert(runWord(kTableRuns - 1).bits == kTableCodeBits);

/// Codes of any kind: `bits` bits of `code`, in each lane.
struct CodeLanes {
    __m512i code;
    __m512i bits;
};

/// Returns: the codes of the lanes 2i and 2i + 1 joined, in lanes of twice the size.
QMX_TARGET inline CodeLanes joined16(const CodeLanes& lanes) {
    const __m512i low = _mm512_set1_epi32(0xFFFF);
    const __m512i firstBits = _mm512_and_si512(lanes.bits, low);
    const __m512i second = _mm512_maskz_srli_epi32(0xFFFF, lanes.code, 16);
    return {_mm512_or_si512(_mm512_and_si512(lanes.code, low),
                            _mm512_maskz_sllv_epi32(0xFFFF, second, firstBits)),
            _mm512_add_epi32(firstBits, _mm512_maskz_srli_epi32(0xFFFF, lanes.bits, 16))};
}

QMX_TARGET inline CodeLanes joined32(const CodeLanes& lanes) {
    const __m512i low = _mm512_set1_epi64(0xFFFFFFFF);
    const __m512i firstBits = _mm512_and_si512(lanes.bits, low);
    const __m512i second = _mm512_maskz_srli_epi64(0xFF, lanes.code, 32);
    return {_mm512_or_si512(_mm512_and_si512(lanes.code, low),
                            _mm512_maskz_sllv_epi64(0xFF, second, firstBits)),
            _mm512_add_epi64(firstBits, _mm512_maskz_srli_epi64(0xFF, lanes.bits, 32))};
}

/// Appends the codes of eight lanes; two at a time where all pairs fit a word.
QMX_TARGET inline void appendLanes(BitBatch& batch, const CodeLanes& lanes) {
    const __m512i secondBits = _mm512_bsrli_epi128(lanes.bits, 8);
    const __m512i bits = _mm512_add_epi64(lanes.bits, secondBits);
    alignas(64) std::uint64_t codes[8];
    alignas(64) std::uint64_t lengths[8];
    if (_mm512_cmpgt_epu64_mask(bits, _mm512_set1_epi64(kWordBits)) == 0) [[likely]] {
        const __m512i second = _mm512_bsrli_epi128(lanes.code, 8);
        _mm512_store_si512(
            codes, _mm512_or_si512(lanes.code, _mm512_maskz_sllv_epi64(0xFF, second, lanes.bits)));
        _mm512_store_si512(lengths, bits);
        for (int i = 0; i < 8; i += 2)
            batch.append(codes[i], lengths[i]);
    } else {
        _mm512_store_si512(codes, lanes.code);
        _mm512_store_si512(lengths, lanes.bits);
        for (int i = 0; i < 8; ++i)
            batch.append(codes[i], lengths[i]);
    }
}

/// Events of a block: runs in front of them, 0 or 1 for their signs, and which lanes count.
struct Block {
    __m512i runs;
    __m512i signs;
    __mmask32 lanes;
};

QMX_TARGET inline Block loadBlock(const std::uint16_t* events, std::size_t count) {
    const auto lanes = static_cast<__mmask32>(lowBits(static_cast<int>(count)));
    const __m512i here = _mm512_maskz_loadu_epi16(lanes, events);
    const __m512i before = _mm512_maskz_loadu_epi16(lanes, events - 1);
    const __m512i distance =
        _mm512_sub_epi16(_mm512_srli_epi16(here, 1), _mm512_srli_epi16(before, 1));
    const __m512i one = _mm512_set1_epi16(1);
    return {_mm512_sub_epi16(distance, one), _mm512_and_si512(here, one), lanes};
}

QMX_TARGET inline CodeLanes shortCodes(const Block& block) {
    const __m512i entries = _mm512_maskz_permutex2var_epi16(
        block.lanes, _mm512_load_si512(kTableCodes.data()), block.runs,
        _mm512_load_si512(kTableCodes.data() + kTableRuns / 2));
    const __m512i bits = _mm512_srli_epi16(entries, kTableCodeBits);
    const __m512i codes = _mm512_and_si512(entries, _mm512_set1_epi16((1 << kTableCodeBits) - 1));
    return {_mm512_or_si512(codes, _mm512_sllv_epi16(block.signs, bits)),
            _mm512_mask_add_epi16(bits, block.lanes, bits, _mm512_set1_epi16(1))};
}

/// The form of appendEvent, 16 events at once.
QMX_TARGET inline CodeLanes longCodes(__m256i runs16, __m256i signs16, __mmask16 lanes) {
    const __m512i one = _mm512_set1_epi32(1);
    const __m512i runs = _mm512_maskz_cvtepu16_epi32(lanes, runs16);
    const __m512i signs = _mm512_maskz_cvtepu16_epi32(lanes, signs16);
    const __m512i n = _mm512_sub_epi32(
        _mm512_set1_epi32(31), _mm512_maskz_lzcnt_epi32(0xFFFF, _mm512_or_si512(runs, one)));
    const __m512i zeros = _mm512_mask_add_epi32(n, _mm512_test_epi32_mask(runs, runs), n, one);
    const __m512i mark = _mm512_maskz_sllv_epi32(lanes, one, zeros);
    const __m512i top = _mm512_maskz_sllv_epi32(lanes, one, n);
    const __m512i low = _mm512_and_si512(runs, _mm512_sub_epi32(top, one));
    const __m512i tail = _mm512_or_si512(low, _mm512_maskz_sllv_epi32(lanes, signs, n));
    const __m512i markBits = _mm512_add_epi32(zeros, one);
    const __m512i codes = _mm512_or_si512(mark, _mm512_maskz_sllv_epi32(lanes, tail, markBits));
    return {codes, _mm512_maskz_add_epi32(lanes, _mm512_add_epi32(markBits, n), one)};
}

QMX_TARGET inline void makeRoom(OrderSections& order, int p, BitBatch& batch) {
    if (!batch.isFull()) [[likely]]
        return;
    order.pairs[p].significance = batch;
    order.makeRoomForRuns(p);
    batch = order.pairs[p].significance;
}

/// Returns: the batch behind the block.
[[gnu::noinline]] QMX_TARGET BitBatch appendLongBlock(OrderSections& order, int p, BitBatch batch,
                                                      Block block) {
    appendLanes(batch, joined32(longCodes(half<0>(block.runs), half<0>(block.signs),
                                          static_cast<__mmask16>(block.lanes))));
    makeRoom(order, p, batch);
    appendLanes(batch, joined32(longCodes(half<1>(block.runs), half<1>(block.signs),
                                          static_cast<__mmask16>(block.lanes >> 16))));
    return batch;
}

QMX_TARGET inline BitBatch appendBlock(OrderSections& order, int p, BitBatch batch,
                                       const std::uint16_t* events, std::size_t count) {
    makeRoom(order, p, batch);
    const Block block = loadBlock(events, count);
    const __m512i last = _mm512_set1_epi16(kTableRuns - 1);
    if (_mm512_mask_cmpgt_epu16_mask(block.lanes, block.runs, last) != 0)
        return appendLongBlock(order, p, batch, block);
    appendLanes(batch, joined32(joined16(shortCodes(block))));
    return batch;
}

[[gnu::noinline]] QMX_TARGET void appendQueue(OrderSections& order, int p) {
    EventQueue& queue = order.queues[p];
    if (queue.count == 0) return;
    SectionPair& pair = order.pairs[p];
    order.makeRoomForRuns(p);
    BitBatch batch = pair.significance;
    appendEvent(batch, queue.base + queue.events[0] / 2 - pair.coded, queue.events[0] & 1U);
    for (std::size_t i = 1; i < queue.count; i += kBlockEvents)
        batch =
            appendBlock(order, p, batch, queue.events + i, std::min(kBlockEvents, queue.count - i));
    pair.significance = batch;
    pair.coded = queue.base + queue.events[queue.count - 1] / 2 + 1;
    pair.newCount += queue.count;
    queue.count = 0;
}

QMX_TARGET void appendQueues(OrderSections& order) {
    for (int p = 0; p < order.planes; ++p)
        appendQueue(order, p);
}

/// Positions in a group, doubled, in bytes.
alignas(64) constexpr auto kPositions = [] {
    std::array<std::uint8_t, kGroupSize> positions{};
    for (std::size_t i = 0; i < kGroupSize; ++i)
        positions[i] = static_cast<std::uint8_t>(2 * i);
    return positions;
}();

QMX_TARGET inline void storeEvents(std::uint16_t* out, __m256i positions, std::uint64_t distance) {
    const __m512i first = _mm512_set1_epi16(static_cast<short>(2 * distance));
    _mm512_storeu_si512(
        out, _mm512_add_epi16(_mm512_maskz_cvtepu8_epi16(~__mmask32{0}, positions), first));
}

QMX_TARGET inline void takeNew(OrderSections& order, int p, std::uint64_t fresh,
                               std::uint64_t above, std::uint64_t negative) {
    constexpr std::uint64_t kFarthest = 0x8000 - kGroupSize;
    EventQueue& queue = order.queues[p];
    const std::uint64_t index = order.position - order.pairs[p].excluded;
    if (queue.count > EventQueue::kEvents - kGroupSize || index - queue.base > kFarthest)
        [[unlikely]] {
        appendQueue(order, p);
        queue.base = index;
    }
    const std::uint64_t candidates = extract(fresh, ~above);
    const std::uint64_t signs = extract(fresh & negative, ~above);
    const __m512i positions = _mm512_load_si512(kPositions.data());
    const __m512i events = _mm512_maskz_compress_epi8(
        candidates, _mm512_mask_add_epi8(positions, signs, positions, _mm512_set1_epi8(1)));
    std::uint16_t* const out = queue.events + queue.count;
    storeEvents(out, half<0>(events), index - queue.base);
    const auto count = countOnes(fresh);
    if (count > kGroupSize / 2)
        storeEvents(out + kGroupSize / 2, half<1>(events), index - queue.base);
    queue.count += count;
}

#include "coding/EncodeGroups.inl"

}  // namespace

const EncodeKernels<short> kEncodeShortAvx512{encodeGroups<short>, appendQueues};
const EncodeKernels<int> kEncodeIntAvx512{encodeGroups<int>, appendQueues};

}  // namespace qmx
