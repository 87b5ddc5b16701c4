#pragma once

#include "coding/decode/SectionWindow.h"

namespace qmx {

/// refill of WindowRefill.inl with BMI1 and BMI2, for AVX-512 too, where g++ spills into mask registers
/// and is slower.
void refillWindowsAvx2(SectionWindow* first, SectionWindow* last, std::uint32_t capacity);

}  // namespace qmx
