#pragma once

#include <algorithm>
#include <array>
#include <immintrin.h>

#include "coding/OrderSections.h"
#include "coding/RunTables.h"
#include "image/CpuLevel.h"

/// The events of a queue as run codes and signs, 32 at once with AVX-512.
///
/// Plain way: appendEvent for each. Runs are differences of neighbouring events; codes of short runs come
/// from a table of two vectors, those of long ones from the position of their highest bit; signs follow
/// their codes. Then neighbours are joined, in lanes of 16, 32 and 64 bits, and 4 appends are left for 32
/// events. Joining codes is what appending them one after the other does.
///
/// Format: docs/format.md, 10.2 n section and 11 Run code.
namespace qmx::avx512 {

/// Returns: the lower or the upper half. The form without a mask warns with g++ 12.
template <int Index>
QMX_TARGET_AVX512 inline __m256i half(__m512i v) {
    return _mm512_maskz_extracti64x4_epi64(0xFF, v, Index);
}

/// Events that are coded together.
inline constexpr std::size_t kBlockEvents = 32;
/// Runs whose codes are looked up: six bits index two vectors of 16-bit lanes.
inline constexpr int kTableRuns = 64;
/// A table entry is the code of a run below its length.
inline constexpr int kTableCodeBits = 12;

alignas(64) inline constexpr auto kTableCodes = [] {
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
QMX_TARGET_AVX512 inline CodeLanes joined16(const CodeLanes& lanes) {
    const __m512i low = _mm512_set1_epi32(0xFFFF);
    const __m512i firstBits = _mm512_and_si512(lanes.bits, low);
    const __m512i second = _mm512_maskz_srli_epi32(0xFFFF, lanes.code, 16);
    return {_mm512_or_si512(_mm512_and_si512(lanes.code, low),
                            _mm512_maskz_sllv_epi32(0xFFFF, second, firstBits)),
            _mm512_add_epi32(firstBits, _mm512_maskz_srli_epi32(0xFFFF, lanes.bits, 16))};
}

QMX_TARGET_AVX512 inline CodeLanes joined32(const CodeLanes& lanes) {
    const __m512i low = _mm512_set1_epi64(0xFFFFFFFF);
    const __m512i firstBits = _mm512_and_si512(lanes.bits, low);
    const __m512i second = _mm512_maskz_srli_epi64(0xFF, lanes.code, 32);
    return {_mm512_or_si512(_mm512_and_si512(lanes.code, low),
                            _mm512_maskz_sllv_epi64(0xFF, second, firstBits)),
            _mm512_add_epi64(firstBits, _mm512_maskz_srli_epi64(0xFF, lanes.bits, 32))};
}

/// Appends the codes of eight lanes; two at a time where all pairs fit a word.
QMX_TARGET_AVX512 inline void appendLanes(BitBatch& batch, const CodeLanes& lanes) {
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

QMX_TARGET_AVX512 inline Block loadBlock(const std::uint16_t* events, std::size_t count) {
    const auto lanes = static_cast<__mmask32>(lowBits(static_cast<int>(count)));
    const __m512i here = _mm512_maskz_loadu_epi16(lanes, events);
    const __m512i before = _mm512_maskz_loadu_epi16(lanes, events - 1);
    const __m512i distance =
        _mm512_sub_epi16(_mm512_srli_epi16(here, 1), _mm512_srli_epi16(before, 1));
    const __m512i one = _mm512_set1_epi16(1);
    return {_mm512_sub_epi16(distance, one), _mm512_and_si512(here, one), lanes};
}

QMX_TARGET_AVX512 inline CodeLanes shortCodes(const Block& block) {
    const __m512i entries = _mm512_maskz_permutex2var_epi16(
        block.lanes, _mm512_load_si512(kTableCodes.data()), block.runs,
        _mm512_load_si512(kTableCodes.data() + kTableRuns / 2));
    const __m512i bits = _mm512_srli_epi16(entries, kTableCodeBits);
    const __m512i codes = _mm512_and_si512(entries, _mm512_set1_epi16((1 << kTableCodeBits) - 1));
    return {_mm512_or_si512(codes, _mm512_sllv_epi16(block.signs, bits)),
            _mm512_mask_add_epi16(bits, block.lanes, bits, _mm512_set1_epi16(1))};
}

/// The form of appendEvent, 16 events at once.
QMX_TARGET_AVX512 inline CodeLanes longCodes(__m256i runs16, __m256i signs16, __mmask16 lanes) {
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

QMX_TARGET_AVX512 inline void makeRoom(OrderSections& order, int p, BitBatch& batch) {
    if (!batch.isFull()) [[likely]]
        return;
    order.pairs[p].significance = batch;
    order.makeRoomForRuns(p);
    batch = order.pairs[p].significance;
}

/// Returns: the batch behind the block.
[[gnu::noinline]] QMX_TARGET_AVX512 inline BitBatch appendLongBlock(OrderSections& order, int p,
                                                                    BitBatch batch, Block block) {
    appendLanes(batch, joined32(longCodes(half<0>(block.runs), half<0>(block.signs),
                                          static_cast<__mmask16>(block.lanes))));
    makeRoom(order, p, batch);
    appendLanes(batch, joined32(longCodes(half<1>(block.runs), half<1>(block.signs),
                                          static_cast<__mmask16>(block.lanes >> 16))));
    return batch;
}

QMX_TARGET_AVX512 inline BitBatch appendBlock(OrderSections& order, int p, BitBatch batch,
                                              const std::uint16_t* events, std::size_t count) {
    makeRoom(order, p, batch);
    const Block block = loadBlock(events, count);
    const __m512i last = _mm512_set1_epi16(kTableRuns - 1);
    if (_mm512_mask_cmpgt_epu16_mask(block.lanes, block.runs, last) != 0)
        return appendLongBlock(order, p, batch, block);
    appendLanes(batch, joined32(joined16(shortCodes(block))));
    return batch;
}

/// Codes all events of bit plane p, and counts them. Throws: std::bad_alloc.
[[gnu::noinline]] QMX_TARGET_AVX512 inline void appendQueue(OrderSections& order, int p) {
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

}  // namespace qmx::avx512
