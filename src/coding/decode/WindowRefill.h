#pragma once

#include "coding/decode/SectionWindow.h"

namespace qmx {

// Parsing of n sections into their windows. All levels leave the same state.
// Format: docs/format.md, 10.2 n section and 11 Run code.

/// Fills the windows from first to last, inclusive, that have room for a quarter of their candidates.
/// Returns: the groups that can be taken from all of them before the next call, at least 1.
/// Requires: first <= last; capacity is a multiple of 64 from 256 on and what the windows have room
/// for. Throws: std::bad_alloc, when a reader needs its file window.
std::uint32_t refillWindowsPlain(SectionWindow* first, SectionWindow* last, std::uint32_t capacity);
/// The same with BMI1 and BMI2, for AVX-512 too, where g++ spills into mask registers and is slower.
std::uint32_t refillWindowsAvx2(SectionWindow* first, SectionWindow* last, std::uint32_t capacity);

}  // namespace qmx
