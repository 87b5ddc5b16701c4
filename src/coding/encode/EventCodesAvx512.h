#pragma once

#include <algorithm>
#include <array>

#include "coding/encode/OrderSections.h"
#include "coding/encode/WindowCodes.h"
#include "image/LanesAvx512.h"

/// Events of a queue as run codes with signs, 32 at once. For AVX-512 alone.
///
/// Plain way: appendEvent for each. Runs are differences of neighbouring events; codes of short runs come
/// from a table of two vectors, those of long ones from the position of their highest bit; signs follow
/// their codes. Then neighbours are joined, in lanes of 16, 32 and 64 bits: what appending them one after
/// the other does.
///
/// Format: docs/format.md, 10.2 n section and 11 Run code.
namespace qmx::avx512 {

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

/// Events of a block: runs in front of them, 0 or 1 for their signs, and which lanes count.
struct Block {
    __m512i runs;
    __m512i signs;
    __mmask32 lanes;
};

/// The events from `first` on, below `end`. Requires: 0 < first < end.
QMX_TARGET inline Block loadBlock(const EventQueue& queue, std::size_t first, std::size_t end) {
    const std::size_t count = std::min(kBlockEvents, end - first);
    const auto lanes = static_cast<__mmask32>(lowBits(static_cast<int>(count)));
    const __m512i here = _mm512_maskz_loadu_epi16(lanes, queue.events + first);
    const __m512i before = _mm512_maskz_loadu_epi16(lanes, queue.events + first - 1);
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

}  // namespace qmx::avx512
